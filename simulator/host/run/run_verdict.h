#pragma once

#include "simulator/host/run/run_summary.h"

namespace pictara {
/// How a calibration ended, by what the dialog shows and the calibration library logged last.

/// True when the dialog ended the run by itself with all up to the uniformity done, whatever came of the
/// saves.
[[nodiscard]] bool isCalibrated(RunResult const& run);

/// True when the library refused the picture for a light that a person can mend.
[[nodiscard]] bool wasRefusedForItsLight(RunResult const& run);

/// Why a run is not done, in the dialog's own words and then the library's.
[[nodiscard]] QString causeOf(RunResult const& run, std::vector<CaptureRow> const& captures, bool hasEeprom);

/// As a summary's result.
[[nodiscard]] QString toldOf(Verdict verdict);

[[nodiscard]] int exitCodeOf(RunSummary const& summary);
} // namespace pictara
