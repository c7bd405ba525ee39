#include "simulator/host/run/runs.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/sitting.h"
#include "simulator/host/run/measurement.h"
#include "simulator/host/run/verdict.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>

namespace pictara {
QString const kNotHeld = QStringLiteral("The EEPROM does not hold the solution, whatever the dialog shows: ");
QString const kNotUnderEveryLight =
    QStringLiteral("The dialog did not show the uniformity under every light.");

namespace {
std::vector<double> lampsOf(Session& session, DialogPage const& page) {
    std::vector<double> lamps;
    for (CaptureRow const& row : captureRows(page))
        lamps.push_back(row.kelvin);
    return lamps.empty() ? std::vector{session.camera().light().colourTemperature} : lamps;
}

// What is neither good nor bad enough, by its first cell.
QString beyondLimits(Certificate const& certificate) {
    QStringList names;
    for (Table const& table : certificate.tables)
        for (QStringList const& row : table.rows)
            if (row.last() == textOf(Verdict::Marginal) || row.last() == textOf(Verdict::Fail))
                names << row.first();
    return QStringLiteral("Beyond its limit: %1.").arg(names.join(QLatin1String("; ")));
}

// The verdict, unless there is a result that comes before it.
void giveResult(Certificate& certificate, char const* otherwise) {
    if (!certificate.result.isEmpty())
        return;
    certificate.result =
        certificate.verdict == Verdict::None ? QString(otherwise) : textOf(certificate.verdict);
    if (certificate.verdict > Verdict::Pass)
        certificate.cause = beyondLimits(certificate);
}

ExitCode exitCodeOf(Verdict verdict) {
    return verdict == Verdict::Fail ? kExitFail : verdict == Verdict::Marginal ? kExitMarginal : kExitDone;
}
} // namespace

int runReplay(Session& session) {
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, opened); code != kExitDone)
        return code;
    Certificate certificate = certifySitting("replay", session, opened.page);
    QJsonObject eeprom = certificate.figures["eeprom"].toObject();
    eeprom["correction_was_on"] = opened.page.isChecked("Enable_LC");
    certificate.figures["eeprom"] = eeprom;
    ProgressReport progress(opened.page);
    RunDriver driver(opened.page, [&] { session.frames().deliverNext(); });
    driver.onProgress = [&](RunProgress const& state) { progress.show(state); };
    driver.adjustToLight(); // leaves the correction's tables as they are
    EvennessStates const states = measureEvenness(session, opened.page, driver);
    if (files::isInterrupted())
        return kExitInterrupted;
    // The EEPROM does not tell for which falloff it was made.
    tellEvenness(states, {}, certificate);
    ExitCode code = kExitDone;
    if (!states.areWhole()) {
        code = kExitNotCalibrated;
        certificate.result = QStringLiteral("not measured");
        certificate.cause = QStringLiteral("The dialog shows no uniformity for the replayed correction.");
    }
    OutputFolder output(session.outputFolder());
    output.savePicture("replay-dialog.png", opened.dialog->grab().toImage());
    return conclude(session, certificate, output, code);
}

Certificate certifySitting(char const* run, Session& session, DialogPage const& page, QString* lack) {
    Certificate certificate{run};
    QString const lacking =
        tellSitting(session, page.text("Prom_Label"), lampsOf(session, page), certificate);
    if (lack)
        *lack = lacking;
    certificate.figures["steps"] =
        stepsOf({int(session.frames().frameNumber()), page.statusTexts()}, captureRows(page));
    certificate.facts.emplace_back("Plug-in",
                                   page.version().remove("Version: ").replace(" Build Date: ", ", built ") +
                                       ", Qt " + qVersion());
    QString const name = resultsFile(page.text(kSteps[kFileSave].status));
    if (QFileInfo const file(QDir(session.outputFolder()), name); !name.isEmpty() && file.isFile()) {
        certificate.facts.emplace_back("Results file", name);
        QJsonObject board = certificate.figures["board"].toObject();
        board["results_file"] = file.absoluteFilePath();
        certificate.figures["board"] = board;
    }
    return certificate;
}

bool measureSitting(Session& session, DialogPage& page, RunDriver& driver, Certificate& certificate) {
    EvennessStates const states = measureEvenness(session, page, driver);
    tellEvenness(states, targetOf(session, page), certificate);
    return states.areWhole();
}

// Of a sitting that a person or a script leaves: what is in the sensor is measured, unless the last try of a
// calibration failed.
ExitCode certifyWhatIsLeft(char const* run, Session& session, DialogPage& page, Certificate& certificate) {
    RunDriver driver(page, [&] { session.frames().deliverNext(); });
    driver.finish();
    QString const tried = page.text(kSteps[kCalibration].status),
                  saved = page.text(kSteps[kEepromSave].status);
    QString lack;
    certificate = certifySitting(run, session, page, &lack);
    auto const fail = [&](char const* result, QString const& cause, ExitCode code) {
        certificate.result = result;
        certificate.cause = cause;
        return code;
    };
    SolverCause const& refusal = lastSolverCause();
    if (tried.startsWith(QLatin1String("Error"))) {
        certificate.pictures = {{markedRefusal(session.frames().unmarkedPicture(), refusal.blocks,
                                               session.camera().description().orientation),
                                 "The view; refused blocks are marked", "refused.png"}};
        return fail("refused", refusal.text.isEmpty() ? tried : refusal.text,
                    exitCodeOf(RunResult{RunEnd::Cancelled, {}}));
    }
    if (session.desk().listEntriesWritten() == 0)
        return kExitDone;
    if (!measureSitting(session, page, driver, certificate))
        return fail("not measured", QStringLiteral("The dialog does not show the uniformity."),
                    kExitNotCalibrated);
    measureRepeatability(page, driver, certificate);
    if (!measureLights(session, page, driver, certificate))
        return fail("not measured", kNotUnderEveryLight, kExitNotCalibrated);
    bool const wasTried = saved.startsWith(QLatin1String("Done")) || saved.startsWith(QLatin1String("Error"));
    return wasTried && !lack.isEmpty() ? fail("not saved", kNotHeld + lack + '.', kExitNotSaved) : kExitDone;
}

ExitCode certifyScript(Session& session, DialogPage& page, ScriptEnd const& end) {
    Certificate certificate;
    ExitCode code = kExitNotCalibrated;
    if (end.cause.isEmpty()) {
        code = certifyWhatIsLeft("script", session, page, certificate);
    } else {
        certificate = certifySitting("script", session, page);
        certificate.result = QStringLiteral("failed");
        certificate.cause = end.cause;
    }
    certificate.facts.emplace_back("Script", QStringLiteral("%1, %2 of %3 commands done")
                                                 .arg(session.options().scriptFile, QString::number(end.done),
                                                      QString::number(end.commands)));
    certificate.figures["script"] = QJsonObject{{"file", session.options().scriptFile},
                                                {"commands", double(end.commands)},
                                                {"commands_done", double(end.done)}};
    if (files::isInterrupted())
        return kExitInterrupted;
    OutputFolder output(session.outputFolder());
    return conclude(session, certificate, output, code);
}

QByteArray sittingPage(Session& session, DialogPage page) {
    double const lamp = session.camera().light().colourTemperature;
    Certificate certificate;
    (void)certifyWhatIsLeft("calibration", session, page, certificate);
    if (session.camera().light().colourTemperature != lamp) { // the person's comes back, with its exposure
        session.bringLamp(lamp);
        (void)RunDriver(page, [&] { session.frames().deliverNext(); }).adjustToLight();
    }
    page.resumeTimer();
    giveResult(certificate, "not calibrated");
    return certificatePage(certificate);
}

ExitCode conclude(Session const& session, Certificate& certificate, OutputFolder& output, ExitCode code) {
    giveResult(certificate, "done");
    QJsonObject board = certificate.figures["board"].toObject();
    for (auto const& [key, state] : {std::pair("before_ab", "uncorrected"), {"after_ab", "corrected"}})
        board[key] = certificate.figures[state].toObject().value("dialog_colour_deviation_ab");
    board["verdict"] = certificate.result;
    certificate.figures["board"] = board;
    QString const page = writeCertificate(certificate, output);
    if (output.failed())
        certificate.result = QStringLiteral("not written");
    QString error;
    QString const boards = session.options().boardsFile;
    bool const isKept = boards.isEmpty() || output.failed() || appendBoard(certificate, boards, &error);
    ProgressReport::say(QLatin1Char('\n') + certificateText(certificate));
    if (!output.failed())
        ProgressReport::say(QStringLiteral("The certificate is %1.").arg(page));
    for (QString const& cause : {certificate.cause, error})
        if (!cause.isEmpty())
            complain(cause);
    return code != kExitDone            ? code
           : output.failed() || !isKept ? kExitNotSaved
                                        : exitCodeOf(certificate.verdict);
}
} // namespace pictara
