#pragma once

namespace pictara {

/// From now on Ctrl-C and a request to terminate do not end the program but are noted, once: whoever works
/// for long asks, and leaves its files whole. The next one ends the program at once.
void noteInterruptions();
[[nodiscard]] bool isInterrupted();

} // namespace pictara
