#include "common/pause.h"

#include <thread>

namespace {

std::function<void(std::chrono::milliseconds)>& installedPause() {
    static std::function<void(std::chrono::milliseconds)> pause;
    return pause;
}

// A system's sleep may end early, and a device does not answer before its write cycle is over.
void sleepAtLeast(std::chrono::milliseconds duration) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point const end = Clock::now() + duration;
    for (auto now = Clock::now(); now < end; now = Clock::now())
        std::this_thread::sleep_for(std::chrono::ceil<std::chrono::milliseconds>(end - now));
}

} // namespace

void pauseFor(std::chrono::milliseconds duration) {
    if (auto const& pause = installedPause())
        pause(duration);
    else
        sleepAtLeast(duration);
}

void installPause(std::function<void(std::chrono::milliseconds)> pause) {
    installedPause() = std::move(pause);
}
