#pragma once

#include <csignal>
#include <initializer_list>

namespace files {
inline volatile std::sig_atomic_t interrupted = 0; ///< for the two below
[[nodiscard]] inline bool isInterrupted() { return interrupted != 0; }

/// From now on Ctrl-C, a request to terminate and the end of the terminal do not end the program but are
/// noted, once: whoever works for long asks, and leaves its files whole. The next one ends the program at
/// once. What the program was started to ignore stays ignored.
inline void noteInterruptions() {
    auto const note = [](int number) {
        interrupted = 1;
        std::signal(number, SIG_DFL);
    };
#ifdef SIGHUP
    for (int const number : {SIGINT, SIGTERM, SIGHUP})
#else
    for (int const number : {SIGINT, SIGTERM})
#endif
        if (std::signal(number, note) == SIG_IGN)
            std::signal(number, SIG_IGN); // whoever started the program wants it to go on
}
} // namespace files
