#pragma once

#include "simulator/host/report/certificate.h"
#include "simulator/host/run/run_all.h"

namespace pictara {
class OutputFolder;
class Session;

/// Begins a sentence; what the EEPROM lacks follows.
extern QString const kNotHeld;
extern QString const kNotUnderEveryLight; ///< a cause

/// Runs without a person, in a session that is open. Each leaves a certificate in the output folder;
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

/// Begins a certificate of the sitting as it is now; `lack` tells what the EEPROM lacks of a solution.
[[nodiscard]] Certificate certifySitting(char const* run, Session& session, DialogPage const& page,
                                         QString* lack = nullptr);
/// Tells how even the picture is without the correction and with it, by the dialog's own buttons. False when
/// the dialog shows no figure.
[[nodiscard]] bool measureSitting(Session& session, DialogPage& page, RunDriver& driver,
                                  Certificate& certificate);

/// The certificate of a sitting by hand as a page, measured when a solution is in the sensor; the dialog's
/// page ticks by itself again.
[[nodiscard]] QByteArray sittingPage(Session& session, DialogPage page);

/// Writes a script's certificate, of one that failed without a measurement, and adds its board to the table
/// of the options. Returns the program's exit code.
[[nodiscard]] ExitCode certifyScript(Session& session, DialogPage& page, ScriptEnd const& end);

/// Ends a run: gives the certificate its verdict unless it has a result, writes it, adds the board to the
/// table of the options, prints the certificate and complains of a cause. Returns the exit code: that of the
/// verdict, or `code` when it is another than kExitDone.
[[nodiscard]] ExitCode conclude(Session const& session, Certificate& certificate, OutputFolder& output,
                                ExitCode code = kExitDone);
} // namespace pictara
