#include "simulator/host/run/runs.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/sitting.h"
#include "simulator/host/run/measurement.h"
#include "simulator/host/run/progress_report.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QPixmap>

namespace pictara {
namespace {
Section eepromReplayed(Session const& session, bool wasOn) {
    return {
        "eeprom",
        "EEPROM",
        Layout::One,
        {{"file", "EEPROM", {session.options().replayFile}},
         {"replayed_register_writes", "register writes of the replay", {double(session.replayedWrites())}},
         {"correction_was_on", "correction was on when the dialog opened", {wasOn}}}};
}

QString resultOf(std::optional<Evenness> const& before, std::optional<Evenness> const& after) {
    if (!before || !after)
        return QStringLiteral("not measured");
    return isBeyondLimit(*after) ? QStringLiteral("measured, uniformity beyond the limit")
                                 : QStringLiteral("measured");
}
} // namespace

int runReplay(Session& session) {
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, opened); code != kExitDone)
        return code;
    bool const wasOn = opened.page.isChecked("Enable_LC");
    ProgressReport progress(stdout, opened.page);
    RunDriver driver(opened.page, [&] { session.frames().deliverNext(); });
    driver.onProgress = [&](RunProgress const& state) { progress.show(state); };
    driver.adjustToLight(); // leaves the correction's tables as they are
    auto const before = measureEvenness(session, opened.page, driver, false);
    auto const after = measureEvenness(session, opened.page, driver, true);
    if (files::isInterrupted())
        return kExitInterrupted;

    Report report{"replay", resultOf(before, after), {}, evennessSections(before, after)};
    // Honest figures need no solution from the dialog.
    report.sections.insert(report.sections.end(), {eepromReplayed(session, wasOn), sceneSection(session),
                                                   registerSection(session), solutionSection(session)});
    if (!before || !after)
        report.cause = QStringLiteral("The dialog shows no uniformity for the replayed correction.");
    OutputFolder output(session.outputFolder());
    output.savePicture("replay-dialog.png", opened.dialog->grab().toImage());
    QString const page = writeReport(report, output);
    progress.say(QLatin1Char('\n') + reportText(report));
    if (!output.failed())
        progress.say(QStringLiteral("The report is %1.").arg(page));
    if (!report.cause.isEmpty())
        complain(report.cause);
    if (!report.cause.isEmpty() || output.failed())
        return kExitNotCalibrated;
    return isBeyondLimit(*after) ? kExitBeyondLimit : kExitDone;
}
} // namespace pictara
