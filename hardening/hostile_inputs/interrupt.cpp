// Preloaded into a program: raises a signal right before its n-th call that changes the file system, and
// tells at the end how many there were. Calls on the standard streams do not count.

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
long told(char const* name) {
    char const* const text = std::getenv(name);
    return text ? std::atol(text) : 0;
}

long calls = 0;

void count() {
    static long const when = told("INTERRUPT_AT");
    if (++calls == when)
        std::raise(int(told("INTERRUPT_BY")));
}

template <typename Function>
Function* next(Function*, char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

struct Teller {
    ~Teller() {
        char const* const name = std::getenv("INTERRUPT_COUNT");
        if (std::FILE* const file = name ? std::fopen(name, "w") : nullptr) {
            std::fprintf(file, "%ld", calls);
            std::fclose(file);
        }
    }
} const teller;
} // namespace

#define INTERRUPTED(result, name, parameters, arguments, condition)                                          \
    extern "C" result name parameters {                                                                      \
        static auto* const original = next(static_cast<result(*) parameters>(nullptr), #name);               \
        if (condition)                                                                                       \
            count();                                                                                         \
        return original arguments;                                                                           \
    }

#define OPENED(name)                                                                                         \
    extern "C" int name(char const* file, int flags, ...) {                                                  \
        static auto* const original = next(static_cast<int (*)(char const*, int, ...)>(nullptr), #name);     \
        std::va_list rest;                                                                                   \
        va_start(rest, flags);                                                                               \
        int const mode = flags & O_CREAT ? va_arg(rest, int) : 0;                                            \
        va_end(rest);                                                                                        \
        if (flags & O_CREAT)                                                                                 \
            count();                                                                                         \
        return original(file, flags, mode);                                                                  \
    }

OPENED(open)
OPENED(open64) // as the C library calls it for large files
INTERRUPTED(ssize_t, write, (int fd, void const* data, size_t size), (fd, data, size), fd > 2)
INTERRUPTED(int, fchmod, (int fd, mode_t mode), (fd, mode), true)
INTERRUPTED(int, chmod, (char const* file, mode_t mode), (file, mode), true)
INTERRUPTED(int, unlink, (char const* file), (file), true)
INTERRUPTED(int, rename, (char const* from, char const* to), (from, to), true)
INTERRUPTED(int, link, (char const* from, char const* to), (from, to), true)
INTERRUPTED(int, mkdir, (char const* name, mode_t mode), (name, mode), true)
