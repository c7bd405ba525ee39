#include "simulator/host/run/lit_run.h"

#include "simulator/host/run/progress_report.h"
#include "simulator/host/session/session.h"

namespace pictara {
namespace {
// Even light at the normal level with nothing in its way, of the same colour.
void mendLight(Session& session) {
    session.setLight({.colourTemperature = session.camera().light().colourTemperature});
}

// The person at the camera of a page that calibrates under several lights.
void changeLamp(Session& session, CaptureRow const& row, ProgressReport& progress) {
    session.bringLamp(row.kelvin);
    progress.say(
        QStringLiteral("The lamp of %1 K is switched on for the %2.").arg(row.kelvin).arg(row.button));
}
} // namespace

RunResult runAllUnderItsLights(Session& session, CaptureRows& rows, RunDriver& driver,
                               ProgressReport& progress) {
    if (std::vector<CaptureRow> const captures = rows.read(); !captures.empty())
        changeLamp(session, captures.front(), progress);
    driver.onRequests(
        [&] { rows.serve([&](CaptureRow const& row) { changeLamp(session, row, progress); }); });
    RunResult const result = driver.runAll();
    driver.onRequests([] {});
    return result;
}

RunResult runAgain(Session& session, CaptureRows& rows, RunDriver& driver, ProgressReport& progress) {
    mendLight(session);
    if (rows.read().empty())
        return driver.runSteps(kExposure, kEepromSave);
    return runAllUnderItsLights(session, rows, driver, progress);
}
} // namespace pictara
