#include "simulator/files/interruption.h"

#include <csignal>

namespace files {
namespace {
constexpr int kNoted[] = {
    SIGINT,
    SIGTERM,
#ifdef SIGHUP
    SIGHUP,
#endif
};

volatile std::sig_atomic_t interrupted = 0;
} // namespace

extern "C" {
static void onInterruption(int number) {
    interrupted = 1;
    std::signal(number, SIG_DFL);
}
}

void noteInterruptions() {
    for (int const number : kNoted)
        if (std::signal(number, onInterruption) == SIG_IGN)
            std::signal(number, SIG_IGN); // whoever started the program wants it to go on
}

bool isInterrupted() { return interrupted != 0; }
} // namespace files
