#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
class Session;

/// Calibrates without a person: Run All, then the uniformity with and without the sensor's correction. Leaves
/// pictures, a picture of the dialog and a summary in the output folder. Returns the program's exit code.
[[nodiscard]] int runCalibration(Session& session, Options const& options);
} // namespace pictara
