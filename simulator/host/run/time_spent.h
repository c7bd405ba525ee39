#pragma once

#include <algorithm>
#include <chrono>

namespace pictara {
/// Processor time of the program so far, all its threads together, in seconds.
[[nodiscard]] double processorTime();

/// Where time went, in seconds.
struct TimeSpent {
    double processor = 0;
    double byTheClock = 0;

    /// In pauses, and while other programs had the processor.
    [[nodiscard]] double waited() const { return std::max(byTheClock - processor, 0.0); }
};

/// Adds the time of its own life to an account.
class TimeTaken {
public:
    explicit TimeTaken(TimeSpent& account) : m_account(account) {}
    ~TimeTaken() {
        m_account.processor += processorTime() - m_processor;
        m_account.byTheClock += std::chrono::duration<double>(Clock::now() - m_start).count();
    }
    TimeTaken(TimeTaken const&) = delete;
    TimeTaken& operator=(TimeTaken const&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    TimeSpent& m_account;
    double m_processor = processorTime();
    Clock::time_point m_start = Clock::now();
};
} // namespace pictara
