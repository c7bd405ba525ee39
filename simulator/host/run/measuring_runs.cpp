#include "simulator/host/run/runs.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/sitting.h"
#include "simulator/host/run/measurement.h"
#include "simulator/host/run/verdict.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QPixmap>

namespace pictara {
int runReplay(Session& session) {
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, opened); code != kExitDone)
        return code;
    Section replayed{"eeprom", "EEPROM"};
    replayed.facts = {
        {"file", "EEPROM", {session.options().replayFile}},
        {"replayed_register_writes", "register writes of the replay", {double(session.replayedWrites())}},
        {"correction_was_on",
         "correction was on when the dialog opened",
         {opened.page.isChecked("Enable_LC")}}};
    ProgressReport progress(opened.page);
    RunDriver driver(opened.page, [&] { session.frames().deliverNext(); });
    driver.onProgress = [&](RunProgress const& state) { progress.show(state); };
    driver.adjustToLight(); // leaves the correction's tables as they are
    EvennessStates const states = measureEvenness(session, opened.page, driver);
    if (files::isInterrupted())
        return kExitInterrupted;

    bool const isMeasured = states[0] && states[1], isBeyond = isMeasured && states[1]->isBeyondLimit();
    Report report{"replay",
                  isBeyond     ? "measured, uniformity beyond the limit"
                  : isMeasured ? "measured"
                               : "not measured",
                  isMeasured ? "" : "The dialog shows no uniformity for the replayed correction.",
                  evennessSections(states)};
    report.sections.insert(report.sections.end(),
                           {replayed, sceneSection(session), registerSection(session)});
    OutputFolder output(session.outputFolder());
    output.savePicture("replay-dialog.png", opened.dialog->grab().toImage());
    QString const page = writeReport(report, output);
    ProgressReport::say(QLatin1Char('\n') + reportText(report));
    if (!output.failed())
        ProgressReport::say(QStringLiteral("The report is %1.").arg(page));
    if (!isMeasured)
        complain(report.cause);
    return !isMeasured || output.failed() ? kExitNotCalibrated : isBeyond ? kExitBeyondLimit : kExitDone;
}

QString reportScript(Session& session, DialogPage& page, ScriptEnd const& end, OutputFolder& output) {
    QString lack;
    Section script{"script", "Script"};
    script.facts = {{"file", "script", {session.options().scriptFile}},
                    {"commands", "commands", {double(end.commands)}},
                    {"commands_done", "commands done", {double(end.done)}}};
    std::vector<Section> sections{script, stepSection({end.frames, page.statusTexts()}, captureRows(page)),
                                  sceneSection(session), registerSection(session),
                                  eepromSection(session, page.text("Prom_Label"), &lack)};
    if (end.cause.isEmpty() && session.desk().listEntriesWritten() > 0) {
        RunDriver driver(page, [&] { session.frames().deliverNext(); });
        std::vector<Section> const evenness = evennessSections(measureEvenness(session, page, driver));
        sections.insert(sections.begin() + 1, evenness.begin(), evenness.end());
    }
    if (files::isInterrupted())
        return {};
    return writeReport({"script", end.cause.isEmpty() ? "done" : "failed", end.cause, sections}, output);
}
} // namespace pictara
