#pragma once

#include "simulator/host/command_line.h"

namespace pictara {

/// The exit code for what the calibration library logged last: that of the refusal, or kExitNotCalibrated
/// when the library refused no picture.
[[nodiscard]] ExitCode exitCodeOfRefusal(QString const& solverMessage);

} // namespace pictara
