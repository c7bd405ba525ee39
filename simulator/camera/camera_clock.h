#pragma once

#include <chrono>

namespace simulator {
/// The time that passes for the devices on the headboard. It follows the computer's steady clock until it is
/// made virtual; from then on it passes only when somebody says so.
class CameraClock {
public:
    using Duration = std::chrono::steady_clock::duration;

    /// Time since the camera was opened.
    [[nodiscard]] Duration now() const;
    /// Stops following the steady clock; what passed so far stays passed.
    void useVirtualTime();
    /// Lets time pass without anybody waiting for it. Ignores what is not above 0.
    void advance(Duration time);
    /// Returns when the time has passed: sleeps, or advances the virtual time.
    void wait(Duration time);

private:
    [[nodiscard]] Duration elapsed() const;

    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    Duration m_advanced{};
    bool m_isVirtual = false;
};
} // namespace simulator
