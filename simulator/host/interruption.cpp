#include "simulator/host/interruption.h"

#include <csignal>

namespace pictara {
namespace {

volatile std::sig_atomic_t interrupted = 0;

} // namespace

extern "C" {
static void onInterruption(int number) {
    interrupted = 1;
    std::signal(number, SIG_DFL);
}
}

void noteInterruptions() {
    std::signal(SIGINT, onInterruption);
    std::signal(SIGTERM, onInterruption);
}

bool isInterrupted() {
    return interrupted != 0;
}

} // namespace pictara
