#include "simulator/host/calibration_run.h"

#include "simulator/host/dialog_setup.h"
#include "simulator/host/message_log.h"
#include "simulator/host/output_folder.h"
#include "simulator/host/progress_report.h"
#include "simulator/host/refusal.h"
#include "simulator/host/run_summary.h"
#include "simulator/host/session.h"

#include <QDialog>
#include <QPixmap>
#include <cstdio>

namespace pictara {
namespace {

// The figures with the sensor's correction on or off, all else equal. Nothing when the dialog shows none.
std::optional<Evenness> measure(Session& session, DialogPage& page, RunDriver& driver, bool corrected) {
    // The test of the dialog switches the correction on; it measures with the next frame, so there is still
    // time to switch it off.
    if (!page.press("ColorUniformity"))
        return std::nullopt;
    if (!corrected && page.isChecked("Enable_LC"))
        page.press("Enable_LC");
    if (page.isChecked("Enable_LC") != corrected) {
        qWarning("pictara: the dialog shows the lens correction %s", corrected ? "off" : "on");
        return std::nullopt;
    }
    Evenness result;
    if (!driver.awaitUniformity(&result.uniformity))
        return std::nullopt;
    result.blocks = session.frames().blocks();
    result.picture = session.frames().unmarkedPicture();
    return result;
}

bool isFailure(QString const& status, RunEnd end, bool hasEeprom) {
    return status.startsWith(QLatin1String("Error")) || status.startsWith(QLatin1String("Warning")) ||
           (end == RunEnd::TimedOut && status.startsWith(QLatin1String("In progress"))) ||
           (hasEeprom && status == QLatin1String("No EEPROM."));
}

// Of a run that shows no error. Only the EEPROM holds the dialog before the first step: it goes on once that
// answers or is certain not to be there.
QString standstillOf(QStringList const& texts) {
    bool const hasBegun = texts.value(kSetup) == QLatin1String("Done.");
    return hasBegun ? QStringLiteral("Run All stands still.")
                    : QStringLiteral("Run All stands still before its first step: it asks for the EEPROM and "
                                     "does not learn whether there is one.");
}

QString causeOf(RunResult const& run, bool hasEeprom) {
    QStringList causes;
    if (run.end == RunEnd::TimedOut)
        causes.append(QStringLiteral("The run did not end in %1 frames.").arg(run.last.frames));
    for (int i = 0; i < run.last.statusTexts.size(); ++i) {
        QString const status = run.last.statusTexts[i].trimmed();
        if (isFailure(status, run.end, hasEeprom))
            causes.append(QString::fromLatin1(kSteps[i].status) + QLatin1String(": ") + status);
    }
    if (QString const solver = lastSolverMessage(); !solver.isEmpty())
        causes.append(solver);
    if (run.end == RunEnd::Cancelled && causes.isEmpty())
        causes.append(standstillOf(run.last.statusTexts));
    return causes.join(QLatin1String(" | "));
}

bool isDone(RunResult const& run, simulator::SimulatedCamera const& camera) {
    return run.end == RunEnd::Finished && allStepsDone(run.last.statusTexts, camera.hasEeprom());
}

bool wasRefusedForItsLight(RunResult const& run, simulator::SimulatedCamera const& camera) {
    ExitCode const code = exitCodeOfRefusal(lastSolverMessage());
    return !isDone(run, camera) && code != kExitNotCalibrated && code != kExitWrongSize;
}

// Even light at the normal level with nothing in its way, of the same colour.
void mendLight(simulator::SimulatedCamera& camera) {
    camera.setLight({.colourTemperature = camera.light().colourTemperature});
}

int exitCodeOf(RunSummary const& summary) {
    if (summary.succeeded)
        return kExitDone;
    return summary.run.end == RunEnd::TimedOut ? kExitTimeout : exitCodeOfRefusal(lastSolverMessage());
}

RunSummary describe(Session& session, Options const& options) {
    RunSummary summary;
    summary.camera = session.camera().description();
    summary.shading = options.shadingFile;
    summary.seed = options.seed;
    return summary;
}

void calibrate(Session& session, Options const& options, RunDriver& driver, ProgressReport& progress,
               RunSummary& summary) {
    summary.run = driver.runAll();
    simulator::SimulatedCamera const& camera = session.camera();
    if (options.thenGood && wasRefusedForItsLight(summary.run, camera)) {
        summary.firstRefusal = causeOf(summary.run, camera.hasEeprom());
        progress.say(QStringLiteral("refused: %1\nThe light is mended.").arg(summary.firstRefusal));
        forgetSolverMessage();
        mendLight(session.camera());
        summary.run = driver.runSteps(kExposure, kEepromSave);
    }
    summary.light = session.camera().light();
    summary.solutionRegisters = session.desk().listEntriesWritten();
    summary.registerWrites = session.camera().registerWrites();
}

void judge(Session& session, DialogPage& page, RunDriver& driver, OutputFolder& output, RunSummary& summary) {
    if (!isDone(summary.run, session.camera())) {
        summary.cause = causeOf(summary.run, session.camera().hasEeprom());
        return;
    }
    summary.before = measure(session, page, driver, false);
    summary.after = measure(session, page, driver, true); // leaves the correction on
    QString const results = summary.run.last.statusTexts[kFileSave].mid(int(qstrlen("Done: ")));
    summary.succeeded = output.expect(results) && summary.before && summary.after;
    if (!summary.succeeded)
        summary.cause =
            QStringLiteral("The results file %1 or the closing measurement is missing.").arg(results);
}

void writeResults(OutputFolder& output, RunSummary& summary) {
    if (summary.before)
        output.savePicture(QStringLiteral("before.png"),
                           markedPicture(summary.before->picture, summary.before->blocks.worstBlock));
    if (summary.after)
        output.savePicture(QStringLiteral("after.png"),
                           markedPicture(summary.after->picture, summary.after->blocks.worstBlock));
    summary.filesWritten = output.written() + QStringList(QStringLiteral("summary.txt"));
    output.saveText(QStringLiteral("summary.txt"), summaryText(summary));
}

} // namespace

int runCalibration(Session& session, Options const& options) {
    QString error;
    QDialog* const dialog = session.openDialog(nullptr, &error);
    if (!dialog) {
        complain(error);
        return kExitUsage;
    }
    dialog->show();
    DialogPage page = DialogPage::find(dialog);
    if (!page) {
        complain(QStringLiteral("The dialog has no page for this sensor that Run All could work on."));
        return kExitNotCalibrated;
    }
    page.stopTimer();
    if (!setUpDialog(page, options, session.outputFolder(), &error)) {
        complain(error);
        return kExitUsage;
    }

    OutputFolder output(session.outputFolder());
    ProgressReport progress(stdout, page);
    RunDriver driver(
        page, [&] { session.frames().deliverNext(); }, options.framesPerTick, options.maxFrames);
    driver.onProgress([&](RunProgress const& state) { progress.show(state); });
    driver.onSaving([&] { progress.say(QStringLiteral("saving to the EEPROM...")); });

    RunSummary summary = describe(session, options);
    calibrate(session, options, driver, progress, summary);
    output.savePicture(QStringLiteral("dialog.png"), dialog->grab().toImage());
    driver.onProgress([](RunProgress const&) {});
    judge(session, page, driver, output, summary);
    writeResults(output, summary);
    progress.say(QLatin1Char('\n') + summaryText(summary));
    if (!summary.cause.isEmpty())
        complain(summary.cause);
    return output.failed() ? int(kExitNotCalibrated) : exitCodeOf(summary);
}

} // namespace pictara
