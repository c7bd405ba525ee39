#pragma once

namespace pictara {
class Session;

/// Runs without a person, in a session that is open. Each leaves pictures, a picture of the dialog and a
/// report in the output folder and returns the program's exit code.

/// Calibrates: Run All, then the uniformity with and without the sensor's correction.
[[nodiscard]] int runCalibration(Session& session);

/// Measures the correction that the camera replayed from its EEPROM: nothing is calibrated, and nothing but
/// the replay wrote the correction's registers. kExitDone when the dialog showed its figures.
[[nodiscard]] int runReplay(Session& session);
} // namespace pictara
