#pragma once

#include "simulator/host/run/capture_rows.h"
#include "simulator/host/run/run_all.h"

namespace pictara {
class ProgressReport;
class Session;

/// Runs of the dialog with a person at the lamp, who brings each light that the page asks for.

/// Presses Run All and sees it through.
[[nodiscard]] RunResult runAllUnderItsLights(Session& session, CaptureRows& rows, RunDriver& driver,
                                             ProgressReport& progress);

/// Goes on after a refused picture: mends the light and calibrates again. Pictures that were taken in a bad
/// light are taken anew; where there is but one, the step of the calibration takes it.
[[nodiscard]] RunResult runAgain(Session& session, CaptureRows& rows, RunDriver& driver,
                                 ProgressReport& progress);
} // namespace pictara
