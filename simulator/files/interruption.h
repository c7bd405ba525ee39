#pragma once

namespace files {
/// From now on Ctrl-C, a request to terminate and the end of the terminal do not end the program but are
/// noted, once: whoever works for long asks, and leaves its files whole. The next one ends the program at
/// once. What the program was started to ignore stays ignored.
void noteInterruptions();
[[nodiscard]] bool isInterrupted();
} // namespace files
