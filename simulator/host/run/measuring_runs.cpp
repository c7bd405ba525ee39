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

ExitCode certifyScript(Session& session, DialogPage& page, ScriptEnd const& end) {
    Certificate certificate = certifySitting("script", session, page);
    certificate.facts.emplace_back("Script", QStringLiteral("%1, %2 of %3 commands done")
                                                 .arg(session.options().scriptFile)
                                                 .arg(end.done)
                                                 .arg(end.commands));
    certificate.figures["script"] = QJsonObject{{"file", session.options().scriptFile},
                                                {"commands", double(end.commands)},
                                                {"commands_done", double(end.done)}};
    ExitCode code = kExitDone;
    certificate.figures["steps"] = stepsOf({end.frames, page.statusTexts()}, captureRows(page));
    if (!end.cause.isEmpty()) {
        code = kExitNotCalibrated;
        certificate.result = QStringLiteral("failed");
        certificate.cause = end.cause;
    } else if (session.desk().listEntriesWritten() > 0) {
        RunDriver driver(page, [&] { session.frames().deliverNext(); });
        if (measureSitting(session, page, driver, certificate))
            measureRepeatability(page, driver, certificate);
    }
    if (files::isInterrupted())
        return kExitInterrupted;
    OutputFolder output(session.outputFolder());
    return conclude(session, certificate, output, code);
}

QByteArray sittingPage(Session& session, DialogPage page) {
    Certificate certificate = certifySitting("calibration", session, page);
    if (session.desk().listEntriesWritten() > 0) {
        RunDriver driver(page, [&] { session.frames().deliverNext(); });
        if (measureSitting(session, page, driver, certificate))
            measureRepeatability(page, driver, certificate);
        page.resumeTimer();
    }
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
    QString error;
    QString const boards = session.options().boardsFile;
    bool const isKept = boards.isEmpty() || appendBoard(certificate, boards, &error);
    ProgressReport::say(QLatin1Char('\n') + certificateText(certificate));
    if (!output.failed())
        ProgressReport::say(QStringLiteral("The certificate is %1.").arg(page));
    for (QString const& cause : {certificate.cause, error})
        if (!cause.isEmpty())
            complain(cause);
    return output.failed() || !isKept ? kExitNotCalibrated
           : code == kExitDone        ? exitCodeOf(certificate.verdict)
                                      : code;
}
} // namespace pictara
