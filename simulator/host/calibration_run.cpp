#include "simulator/host/calibration_run.h"

#include "simulator/host/capture_rows.h"
#include "simulator/host/closing_measurement.h"
#include "simulator/host/headless_dialog.h"
#include "simulator/host/interruption.h"
#include "simulator/host/light_matrix.h"
#include "simulator/host/message_log.h"
#include "simulator/host/output_folder.h"
#include "simulator/host/progress_report.h"
#include "simulator/host/refusal.h"
#include "simulator/host/run_summary.h"
#include "simulator/host/session.h"

#include <QDialog>
#include <QFileInfo>
#include <QPixmap>
#include <QRegularExpression>
#include <algorithm>
#include <cstdio>
#include <iterator>

namespace pictara {
namespace {

bool isFailure(QString const& status, RunEnd end, bool hasEeprom) {
    return status.startsWith(QLatin1String("Error")) || status.startsWith(QLatin1String("Warning")) ||
           (end == RunEnd::TimedOut && status.startsWith(QLatin1String("In progress"))) ||
           (hasEeprom && status == QLatin1String("No EEPROM."));
}

// Of a run that shows no error. Only the EEPROM holds the dialog before the first step: it goes on once that
// answers or is certain not to be there.
QString standstillOf(QStringList const& texts) {
    bool const hasBegun = texts.value(kSetup) == QLatin1String("Done.");
    return hasBegun ? QStringLiteral(
                          "Run All stands still without an error, as it does where it waits for a person.")
                    : QStringLiteral("Run All stands still before its first step: it asks for the EEPROM and "
                                     "does not learn whether there is one.");
}

QString causeOf(RunResult const& run, std::vector<CaptureRow> const& captures, bool hasEeprom) {
    QStringList causes;
    if (run.end == RunEnd::TimedOut)
        causes.append(QStringLiteral("The run did not end in %1 frames.").arg(run.last.frames));
    for (int i = 0; i < run.last.statusTexts.size(); ++i) {
        QString const status = run.last.statusTexts[i].trimmed();
        if (isFailure(status, run.end, hasEeprom))
            causes.append(QString::fromLatin1(kSteps[i].status) + QLatin1String(": ") + status);
    }
    for (CaptureRow const& row : captures)
        if (row.status.startsWith(QLatin1String("Error")))
            causes.append(row.button + QLatin1String(": ") + row.status);
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
void mendLight(Session& session) {
    session.setLight({.colourTemperature = session.camera().light().colourTemperature});
}

int exitCodeOf(RunSummary const& summary) {
    if (summary.succeeded)
        return kExitDone;
    return summary.run.end == RunEnd::TimedOut ? kExitTimeout : exitCodeOfRefusal(lastSolverMessage());
}

// None on a camera without an EEPROM.
std::optional<EepromUse> eepromUse(Session& session, Options const& options) {
    simulator::SimulatedCamera const& camera = session.camera();
    if (!camera.hasEeprom())
        return std::nullopt;
    QFileInfo const file(session.eepromFile());
    bool const isInFolder = file.absolutePath() == session.outputFolder();
    return EepromUse{.file = isInFolder ? file.fileName() : file.filePath(),
                     .fault = options.fault ? textOf(*options.fault) : QString(),
                     .operations = camera.deviceOperations(),
                     .bytesWritten = camera.deviceBytesWritten()};
}

// Nobody else can tell when the dialog starts to save.
void whenSaving(Session& session, Options const& options, ProgressReport& progress) {
    progress.say(QStringLiteral("saving to the EEPROM..."));
    if (options.fault && !options.fault->operation)
        (void)session.injectFault({options.fault->name, 0, options.fault->forEver});
}

// The person at the camera of a page that calibrates under several lights.
void changeLamp(Session& session, CaptureRow const& row, ProgressReport& progress) {
    session.bringLamp(row.kelvin);
    progress.say(
        QStringLiteral("The lamp of %1 K is switched on for the %2.").arg(row.kelvin).arg(row.button));
}

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

// Pictures that were taken in a bad light are taken anew; where there is but one, the step of the
// calibration takes it.
RunResult runAgain(Session& session, CaptureRows& rows, RunDriver& driver, ProgressReport& progress) {
    if (rows.read().empty())
        return driver.runSteps(kExposure, kEepromSave);
    return runAllUnderItsLights(session, rows, driver, progress);
}

void calibrate(Session& session, DialogPage& page, Options const& options, RunDriver& driver,
               ProgressReport& progress, RunSummary& summary) {
    CaptureRows rows(page);
    summary.run = runAllUnderItsLights(session, rows, driver, progress);
    simulator::SimulatedCamera const& camera = session.camera();
    if (options.thenGood && wasRefusedForItsLight(summary.run, camera)) {
        summary.firstRefusal = causeOf(summary.run, rows.read(), camera.hasEeprom());
        progress.say(QStringLiteral("refused: %1\nThe light is mended.").arg(summary.firstRefusal));
        forgetSolverMessage();
        mendLight(session);
        summary.run = runAgain(session, rows, driver, progress);
    }
    summary.captures = rows.read();
    summary.scene = session.scene();
    summary.solutionRegisters = session.desk().listEntriesWritten();
    summary.registerWrites = camera.registerWrites();
    summary.eeprom = eepromUse(session, options);
}

void judge(Session& session, DialogPage& page, RunDriver& driver, OutputFolder& output, RunSummary& summary) {
    if (!isDone(summary.run, session.camera())) {
        summary.cause = causeOf(summary.run, summary.captures, session.camera().hasEeprom());
        return;
    }
    session.noteConditions();
    summary.before = measureInDetail(session, page, driver, false);
    summary.after = measureInDetail(session, page, driver, true); // leaves the correction on
    // One page cuts the name at "/" alone, so that what lies before "\\" stays.
    QString const saved = summary.run.last.statusTexts[kFileSave].mid(int(qstrlen("Done: ")));
    QString const results = saved.mid(saved.lastIndexOf(QRegularExpression(QStringLiteral("[/\\\\]"))) + 1);
    summary.succeeded = output.expect(results) && summary.before && summary.after;
    if (!summary.succeeded)
        summary.cause =
            QStringLiteral("The results file %1 or the closing measurement is missing.").arg(results);
}

// Under each light of the page, and one between.
void judgeLights(Session& session, DialogPage& page, RunDriver& driver, ProgressReport& progress,
                 RunSummary& summary) {
    if (!summary.succeeded || summary.captures.empty())
        return;
    std::vector<double> lights;
    std::transform(summary.captures.begin(), summary.captures.end(), std::back_inserter(lights),
                   [](CaptureRow const& row) { return row.kelvin; });
    progress.say(QStringLiteral("measuring each table under each light..."));
    summary.lights = measureLights(session, page, driver, lightsToTry(std::move(lights)));
    summary.succeeded = isComplete(summary.lights);
    if (!summary.succeeded)
        summary.cause = QStringLiteral("The dialog did not show the uniformity under every light.");
}

void writeResults(Session& session, OutputFolder& output, RunSummary& summary) {
    if (summary.before)
        output.savePicture(QStringLiteral("before.png"), markedPicture(*summary.before));
    if (summary.after)
        output.savePicture(QStringLiteral("after.png"), markedPicture(*summary.after));
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
    RunDriver driver(
        opened.page, [&] { session.frames().deliverNext(); }, options.framesPerTick, options.maxFrames);
    driver.onProgress([&](RunProgress const& state) { progress.show(state); });
    driver.onSaving([&] { whenSaving(session, options, progress); });

    RunSummary summary;
    calibrate(session, opened.page, options, driver, progress, summary);
    if (isInterrupted())
        return kExitInterrupted;
    output.savePicture(QStringLiteral("dialog.png"), opened.dialog->grab().toImage());
    driver.onProgress([](RunProgress const&) {});
    judge(session, opened.page, driver, output, summary);
    judgeLights(session, opened.page, driver, progress, summary);
    if (isInterrupted())
        return kExitInterrupted;
    writeResults(session, output, summary);
    progress.say(QLatin1Char('\n') + summaryText(summary));
    progress.say(timeLines(driver.timeInTicks()));
    if (!summary.cause.isEmpty())
        complain(summary.cause);
    return output.failed() ? int(kExitNotCalibrated) : exitCodeOf(summary);
}

} // namespace pictara
