#include "tests/support/guarded_memory.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define KESTRA_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTRA_ADDRESS_SANITIZER
#endif
#endif

#ifdef KESTRA_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(begin, size)
#define ASAN_UNPOISON_MEMORY_REGION(begin, size)
#endif

namespace {
constexpr size_t kPage = 4096;

#ifdef _WIN32

uint8_t* guardedPages(size_t size) {
    void* const all = VirtualAlloc(nullptr, size + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS);
    if (!all || !VirtualAlloc(static_cast<uint8_t*>(all) + kPage, size, MEM_COMMIT, PAGE_READWRITE))
        std::abort();
    return static_cast<uint8_t*>(all) + kPage;
}

void freePages(uint8_t* first, size_t) { VirtualFree(first - kPage, 0, MEM_RELEASE); }

#else

uint8_t* guardedPages(size_t size) {
    void* const all = mmap(nullptr, size + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED)
        std::abort();
    uint8_t* const first = static_cast<uint8_t*>(all) + kPage;
    if (mprotect(first, size, PROT_READ | PROT_WRITE) != 0)
        std::abort();
    return first;
}

void freePages(uint8_t* first, size_t size) { munmap(first - kPage, size + 2 * kPage); }

#endif
} // namespace

GuardedMemory::GuardedMemory(size_t size)
    : m_size((size + kPage - 1) / kPage * kPage), m_first(guardedPages(m_size)) {}

GuardedMemory::~GuardedMemory() {
    ASAN_UNPOISON_MEMORY_REGION(m_first, m_size);
    freePages(m_first, m_size);
}

uint8_t* GuardedMemory::place(size_t offset, size_t bytes) {
    if (bytes > m_size)
        std::abort();
    ASAN_POISON_MEMORY_REGION(m_first, m_size);
    ASAN_UNPOISON_MEMORY_REGION(m_first + offset, bytes);
    return m_first + offset;
}
