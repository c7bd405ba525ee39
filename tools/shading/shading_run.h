#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
/// Measures a shading table and writes it, or lays two tables side by side; either ends with a report in the
/// output folder. No plug-in is needed. Returns the program's exit code.
[[nodiscard]] int runShading(Options const& options);
} // namespace pictara
