#pragma once

#include "simulator/host/run/run_all.h"

namespace pictara {
class OutputFolder;
class Session;

/// Runs without a person, in a session that is open. Each leaves pictures and a report in the output folder;
/// those that open the dialog themselves leave a picture of it, too, and return the program's exit code.

/// Calibrates: Run All, then the uniformity with and without the sensor's correction.
[[nodiscard]] int runCalibration(Session& session);

/// Measures the correction that the camera replayed from its EEPROM: nothing is calibrated, and nothing but
/// the replay wrote the correction's registers. kExitDone when the dialog showed its figures.
[[nodiscard]] int runReplay(Session& session);

/// How a script ended.
struct ScriptEnd {
    size_t commands = 0; ///< of the whole script
    size_t done = 0;     ///< of these, without a failure
    QString cause;       ///< of the failure, with file and line; empty for none
    int frames = 0;
};

/// Writes a script's report and its summary for scripts. Of a script that is done and left a solution in the
/// sensor they tell how even the picture is without and with it, measured as at the end of a run by the
/// dialog's own buttons. Returns the page's absolute name; empty when the user interrupted the measurement.
[[nodiscard]] QString reportScript(Session& session, DialogPage& page, ScriptEnd const& end,
                                   OutputFolder& output);
} // namespace pictara
