#include "common/pause.h"

#include <thread>

namespace {

std::function<void(std::chrono::milliseconds)>& installedPause() {
    static std::function<void(std::chrono::milliseconds)> pause;
    return pause;
}

} // namespace

void pauseFor(std::chrono::milliseconds duration) {
    if (auto const& pause = installedPause())
        pause(duration);
    else
        std::this_thread::sleep_for(duration);
}

void installPause(std::function<void(std::chrono::milliseconds)> pause) {
    installedPause() = std::move(pause);
}
