#pragma once

#include "simulator/host/session/command_line.h"

#include <QImage>

namespace pictara {
/// A picture with the blocks drawn into it that the calibration library refused, as `lastRefusedBlocks` tells
/// them: on a grid over the sensor's array, which the picture shows in that orientation.
[[nodiscard]] QImage markedRefusal(QImage picture, QString const& blocks, uint32_t orientation);

/// The exit code for what the calibration library logged last: that of the refusal, or kExitNotCalibrated
/// when the library refused no picture.
[[nodiscard]] ExitCode exitCodeOfRefusal(QString const& solverMessage);
} // namespace pictara
