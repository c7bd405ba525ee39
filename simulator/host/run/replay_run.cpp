#include "simulator/host/run/replay_run.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/output_folder.h"
#include "simulator/host/report/run_report.h"
#include "simulator/host/run/closing_measurement.h"
#include "simulator/host/run/progress_report.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QPixmap>
#include <QTextStream>
#include <cstdio>

namespace pictara {
namespace {
struct ReplaySummary {
    [[nodiscard]] bool isMeasured() const { return before && after; }
    [[nodiscard]] QString result() const {
        if (!isMeasured())
            return QStringLiteral("not measured");
        return isBeyondLimit(*after) ? QStringLiteral("measured, uniformity beyond the limit")
                                     : QStringLiteral("measured");
    }

    Scene scene;
    QString file;
    QString record;
    uint64_t replayedWrites = 0;
    uint64_t dialogsWrites = 0;   ///< register-list entries that the dialog wrote; honest figures need none
    bool wasOnAtOpening = false;  ///< the sensor's correction
    bool conditionsFound = false; ///< they were kept with the EEPROM
    ViewingConditions conditions;
    std::optional<Evenness> before;
    std::optional<Evenness> after;
};

QString textOf(ReplaySummary const& summary) {
    QString text;
    QTextStream out(&text);
    out << "result: " << summary.result() << "\n\n"
        << sceneLines(summary.scene) << '\n'
        << "EEPROM: " << summary.file << '\n'
        << "record: " << (summary.record.isEmpty() ? QStringLiteral("the first one") : summary.record) << '\n'
        << "register writes of the replay: " << summary.replayedWrites << '\n'
        << "register-list entries written by the dialog: " << summary.dialogsWrites << '\n'
        << "correction when the dialog opened: " << (summary.wasOnAtOpening ? "on" : "off") << '\n'
        << "exposure: " << summary.conditions.exposure << " rows\n"
        << "relative gains: red " << summary.conditions.redGain << ", blue " << summary.conditions.blueGain
        << '\n'
        << "exposure and gains: "
        << (summary.conditionsFound ? "as the calibration left them" : "found by the dialog's steps")
        << "\n\n"
        << evennessLines("uncorrected", summary.before) << evennessLines("corrected", summary.after);
    return text;
}

RunReport reportOf(Session& session, ReplaySummary const& summary) {
    auto const text = [](char const* key, QString const& value) {
        return Fact(QString::fromLatin1(key), QString::fromLatin1(key), value);
    };
    FactTable const eeprom{
        QStringLiteral("eeprom"),
        QStringLiteral("EEPROM"),
        {text("file", summary.file),
         text("record", summary.record),
         {"replayed_register_writes", "register writes of the replay", double(summary.replayedWrites)},
         {"correction_was_on", "correction was on when the dialog opened", summary.wasOnAtOpening},
         {"conditions_were_kept", "exposure and gains are those of the calibration",
          summary.conditionsFound}}};
    return {.run = QStringLiteral("replay"),
            .result = summary.result(),
            .cause = {},
            .tables = {sceneFacts(summary.scene),
                       registerFacts(session, summary.dialogsWrites, session.camera().registerWrites()),
                       eeprom},
            .before = summary.before,
            .after = summary.after,
            .refused = {},
            .refusedCaption = {},
            .lights = {},
            .registers = solutionOf(session)};
}

// Exposure and colour balance as after the calibration; they leave the correction's tables as they are.
// Under another lamp than then they are others, too.
void bringConditionsBack(Session& session, Options const& options, RunDriver& driver,
                         ReplaySummary& summary) {
    std::optional<ViewingConditions> const kept = session.replayedConditions();
    summary.conditionsFound = kept && options.lightKelvin.value_or(kept->lamp) == kept->lamp;
    if (summary.conditionsFound)
        session.restoreConditions(*kept);
    else
        driver.runSteps(kExposure, kColourBalance);
    summary.scene = session.scene();
    summary.conditions = session.conditions();
}

void savePictures(OutputFolder& output, QDialog& dialog, ReplaySummary const& summary) {
    output.savePicture(QStringLiteral("replay-dialog.png"), dialog.grab().toImage());
    if (summary.before)
        output.savePicture(QStringLiteral("replay-before.png"), markedPicture(*summary.before));
    if (summary.after)
        output.savePicture(QStringLiteral("replay-after.png"), markedPicture(*summary.after));
    output.removeOthers({"replay-before.png", "replay-after.png"});
}
} // namespace

int runReplay(Session& session, Options const& options) {
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, options, opened); code != kExitDone)
        return code;
    ReplaySummary summary;
    summary.file = options.replayFile;
    summary.record = options.recordName;
    summary.replayedWrites = session.replayedWrites();
    summary.wasOnAtOpening = opened.page.isChecked("Enable_LC");

    OutputFolder output(session.outputFolder());
    ProgressReport progress(stdout, opened.page);
    RunDriver driver(
        opened.page, [&] { session.frames().deliverNext(); }, options.framesPerTick, options.maxFrames);
    driver.onProgress([&](RunProgress const& state) { progress.show(state); });
    bringConditionsBack(session, options, driver, summary);
    summary.before = measureInDetail(session, opened.page, driver, false);
    summary.after = measureInDetail(session, opened.page, driver, true);
    if (files::isInterrupted())
        return kExitInterrupted;
    summary.dialogsWrites = session.desk().listEntriesWritten();

    savePictures(output, *opened.dialog, summary);
    QString const page = writeReport(reportOf(session, summary), output);
    output.saveText(QStringLiteral("replay-summary.txt"), textOf(summary));
    progress.say(QLatin1Char('\n') + textOf(summary));
    if (!output.failed())
        progress.say(QStringLiteral("The report is %1.").arg(page));
    if (!summary.isMeasured())
        complain(QStringLiteral("The dialog shows no uniformity for the replayed correction."));
    if (!summary.isMeasured() || output.failed())
        return kExitNotCalibrated;
    return isBeyondLimit(*summary.after) ? kExitBeyondLimit : kExitDone;
}
} // namespace pictara
