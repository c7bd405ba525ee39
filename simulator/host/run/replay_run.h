#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
class Session;

/// Measures the correction that the camera replayed from its EEPROM: nothing is calibrated, and nothing but
/// the replay wrote the correction's registers. Writes pictures and a summary into the output folder and
/// returns the program's exit code, kExitDone when the dialog showed its figures.
[[nodiscard]] int runReplay(Session& session, Options const& options);
} // namespace pictara
