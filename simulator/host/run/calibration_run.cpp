#include "simulator/host/run/calibration_run.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/output_folder.h"
#include "simulator/host/run/closing_measurement.h"
#include "simulator/host/run/lit_run.h"
#include "simulator/host/run/progress_report.h"
#include "simulator/host/run/refusal.h"
#include "simulator/host/run/run_verdict.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QPixmap>
#include <QRegularExpression>
#include <algorithm>
#include <cstdio>
#include <iterator>

namespace pictara {
namespace {
constexpr char kResultsSection[] = "[Lens Correction]"; // in every results file

// Nobody else can tell when the dialog starts to save.
void whenSaving(Session& session, Options const& options, ProgressReport& progress) {
    progress.say(QStringLiteral("saving to the EEPROM..."));
    if (options.fault && !options.fault->operation)
        (void)session.injectFault({options.fault->name, 0, options.fault->forEver});
}

// The library looks at a picture when the plug-in hands it over, or when it has all that it needs.
void deliverAndWatch(Session& session, RunSummary& summary) {
    session.frames().deliverNext();
    if (!summary.refused.isNull() || lastSolverMessage().isEmpty())
        return;
    QString const blocks = lastRefusedBlocks();
    summary.hasRefusedBlocks = !blocks.isEmpty();
    summary.refused =
        markedRefusal(session.frames().unmarkedPicture(), blocks, session.camera().description().orientation);
}

void calibrate(Session& session, DialogPage& page, Options const& options, RunDriver& driver,
               ProgressReport& progress, RunSummary& summary) {
    CaptureRows rows(page);
    summary.run = runAllUnderItsLights(session, rows, driver, progress);
    simulator::SimulatedCamera const& camera = session.camera();
    if (options.thenGood && wasRefusedForItsLight(summary.run)) {
        summary.firstRefusal = causeOf(summary.run, rows.read(), camera.hasEeprom());
        progress.say(QStringLiteral("refused: %1\nThe light is mended.").arg(summary.firstRefusal));
        forgetSolverMessage();
        summary.refused = {};
        summary.run = runAgain(session, rows, driver, progress);
    }
    summary.captures = rows.read();
    summary.scene = session.scene();
    summary.solutionRegisters = session.desk().listEntriesWritten();
    summary.registerWrites = camera.registerWrites();
    summary.eeprom = eepromUseOf(session, page, options);
}

// Without its folder; empty when none was saved.
QString resultsFile(RunResult const& run) {
    QString const saved = run.last.statusTexts[kFileSave];
    if (!saved.startsWith(QLatin1String("Done: ")))
        return {};
    // One page cuts the name at "/" alone, so that what lies before "\\" stays.
    return saved.mid(std::max(saved.lastIndexOf(QRegularExpression(QStringLiteral("[/\\\\]"))) + 1,
                              int(qstrlen("Done: "))));
}

void judgeSaves(Session& session, OutputFolder& output, RunSummary& summary) {
    bool const hasEeprom = session.camera().hasEeprom();
    QString const results = resultsFile(summary.run);
    bool const hasResults = output.expect(results);
    if (!isSaved(summary.run.last.statusTexts, hasEeprom)) {
        summary.cause = causeOf(summary.run, summary.captures, hasEeprom);
    } else if (!hasResults) {
        summary.cause = QStringLiteral("The results file %1 is missing.").arg(results);
    } else if (summary.eeprom && !summary.eeprom->holdsSolution.value_or(true)) {
        // Not every sensor's dialog reads back what it saved.
        summary.cause =
            QStringLiteral("The EEPROM does not hold the solution, whatever the dialog shows: %1.")
                .arg(summary.eeprom->lack);
    } else {
        session.noteConditions();
        return;
    }
    summary.verdict = Verdict::NotSaved;
}

// The dialog's test is pressed once more without the correction and with it; what it shows then is what is
// pictured, told and judged.
void judge(Session& session, DialogPage& page, RunDriver& driver, OutputFolder& output, RunSummary& summary) {
    if (!isCalibrated(summary.run)) {
        summary.cause = causeOf(summary.run, summary.captures, session.camera().hasEeprom());
        return;
    }
    summary.verdict = Verdict::Calibrated;
    judgeSaves(session, output, summary);
    summary.before = measureInDetail(session, page, driver, false);
    summary.after = measureInDetail(session, page, driver, true); // leaves the correction on
    summary.run.last.statusTexts = page.statusTexts();
    if (!summary.before || !summary.after) {
        summary.verdict = Verdict::NotCalibrated;
        summary.cause = QStringLiteral("The closing measurement is missing.");
    } else if (summary.verdict == Verdict::Calibrated && isBeyondLimit(*summary.after)) {
        summary.verdict = Verdict::BeyondLimit;
        summary.cause = QStringLiteral("The uniformity is beyond the dialog's limit.");
    }
}

// Under each light of the page, and one between.
void judgeLights(Session& session, DialogPage& page, RunDriver& driver, ProgressReport& progress,
                 RunSummary& summary) {
    if (summary.verdict == Verdict::NotCalibrated || summary.captures.empty())
        return;
    std::vector<double> lights;
    std::transform(summary.captures.begin(), summary.captures.end(), std::back_inserter(lights),
                   [](CaptureRow const& row) { return row.kelvin; });
    summary.lights = measureLights(session, page, driver, lightsToTry(std::move(lights)), [&](double kelvin) {
        progress.say(QStringLiteral("measuring each table under %1 K...").arg(kelvin));
    });
    if (isComplete(summary.lights))
        return;
    summary.verdict = Verdict::NotCalibrated;
    summary.cause = QStringLiteral("The dialog did not show the uniformity under every light.");
}

void writeResults(Session& session, OutputFolder& output, RunSummary& summary) {
    if (summary.before)
        output.savePicture(QStringLiteral("before.png"), markedPicture(*summary.before));
    if (summary.after)
        output.savePicture(QStringLiteral("after.png"), markedPicture(*summary.after));
    if (summary.verdict != Verdict::NotCalibrated)
        summary.refused = {};
    if (!summary.refused.isNull())
        output.savePicture(QStringLiteral("refused.png"), summary.refused);
    output.removeOthers({"before.png", "after.png", "refused.png"});
    summary.earlierResults = output.filesOfOthers(QStringLiteral("*.ini"), kResultsSection);
    writeReport(reportOf(session, summary), output);
    summary.filesWritten = output.written() + QStringList(QStringLiteral("summary.txt"));
    output.saveText(QStringLiteral("summary.txt"), summaryText(summary));
}

// For the screen alone: the files of equal runs are equal.
QString timeLines(TimeSpent const& ticks) {
    auto const seconds = [](double value) { return QString::number(value, 'f', 2); };
    return QStringLiteral("processor time: %1 s\n"
                          "processor time in ticks: %2 s\n"
                          "pauses in ticks: %3 s\n")
        .arg(seconds(processorTime()), seconds(ticks.processor), seconds(ticks.waited()));
}
} // namespace

int runCalibration(Session& session, Options const& options) {
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, options, opened); code != kExitDone)
        return code;
    if (options.lightKelvin && !CaptureRows(opened.page).read().empty()) {
        complain(QStringLiteral("This sensor's page names its lights; --light is not for it."));
        return kExitUsage;
    }
    OutputFolder output(session.outputFolder());
    ProgressReport progress(stdout, opened.page);
    RunSummary summary;
    RunDriver driver(
        opened.page, [&] { deliverAndWatch(session, summary); }, options.framesPerTick, options.maxFrames);
    driver.onProgress([&](RunProgress const& state) { progress.show(state); });
    driver.onSaving([&] { whenSaving(session, options, progress); });

    calibrate(session, opened.page, options, driver, progress, summary);
    if (files::isInterrupted())
        return kExitInterrupted;
    if (isCalibrated(summary.run))
        progress.say(QStringLiteral("measuring once more, without the correction and with it..."));
    judge(session, opened.page, driver, output, summary);
    driver.onProgress([](RunProgress const&) {});
    QImage const dialog = opened.dialog->grab().toImage();
    judgeLights(session, opened.page, driver, progress, summary);
    if (files::isInterrupted())
        return kExitInterrupted;
    output.savePicture(QStringLiteral("dialog.png"), dialog);
    writeResults(session, output, summary);
    progress.say(QLatin1Char('\n') + summaryText(summary));
    progress.say(timeLines(driver.timeInTicks()));
    if (!summary.cause.isEmpty())
        complain(summary.cause);
    return output.failed() ? int(kExitNotCalibrated) : exitCodeOf(summary);
}
} // namespace pictara
