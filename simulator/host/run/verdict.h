#pragma once

#include "simulator/host/report/certificate.h"
#include "simulator/host/run/run_all.h"
#include "simulator/host/session/command_line.h"

namespace pictara {
/// How a run ended, by what the dialog shows and the calibration library logged last.

/// The file that a save of the dialog wrote, by its status, without its folder; empty when none was.
[[nodiscard]] QString resultsFile(QString const& status);

/// Why a run is not done, in the dialog's own words and then the library's.
[[nodiscard]] QString causeOf(RunResult const& run, std::vector<CaptureRow> const& captures, bool hasEeprom);

/// What the dialog shows of the steps and of the pictures taken.
[[nodiscard]] QJsonObject stepsOf(RunProgress const& last, std::vector<CaptureRow> const& captures);

/// The exit code of a run that is not calibrated: what the library refused a picture for, if it did.
[[nodiscard]] ExitCode exitCodeOf(RunResult const& run);

/// A picture with the blocks drawn into it that the calibration library refused, as `SolverCause` tells
/// them: on a grid over the sensor's array, which the picture shows in that orientation.
[[nodiscard]] QImage markedRefusal(QImage picture, QString const& blocks, uint32_t orientation);
} // namespace pictara
