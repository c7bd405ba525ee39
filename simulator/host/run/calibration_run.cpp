#include "simulator/host/run/runs.h"

#include "simulator/files/interruption.h"
#include "simulator/host/run/measurement.h"
#include "simulator/host/run/verdict.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QFileInfo>
#include <QPixmap>

namespace pictara {
namespace {
class CalibrationRun {
public:
    CalibrationRun(Session& session, HeadlessDialog const& opened);
    [[nodiscard]] int run();

private:
    void calibrate();
    void judge();
    void judgeSaves();
    void fail(ExitCode code, QString const& cause);

    void deliverAndWatch();
    void changeLamp(CaptureRow const& row);
    void prepareToSave();

    Session& m_session;
    QDialog* m_dialog;
    DialogPage m_page;
    ProgressReport m_progress;
    RunDriver m_driver;
    OutputFolder m_output;

    RunResult m_run;
    ExitCode m_code = kExitDone;
    QString m_lack;                 // what the EEPROM lacks
    std::vector<Picture> m_refused; // the picture that the library refused
    Certificate m_certificate;
};

CalibrationRun::CalibrationRun(Session& session, HeadlessDialog const& opened)
    : m_session(session), m_dialog(opened.dialog), m_page(opened.page), m_progress(m_page),
      m_driver(m_page, [this] { deliverAndWatch(); }), m_output(session.outputFolder()) {
    m_driver.onProgress = [this](RunProgress const& state) { m_progress.show(state); };
    m_driver.onSaving = [this] { prepareToSave(); };
}

// The library looks at a picture when the plug-in hands it over, or when it has all that it needs.
void CalibrationRun::deliverAndWatch() {
    m_session.frames().deliverNext();
    if (!m_refused.empty() || lastSolverCause().text.isEmpty())
        return;
    QString const blocks = lastSolverCause().blocks;
    // A page that takes several pictures has them solved when it has all.
    QString const what =
        captureRows(m_page).empty()
            ? QStringLiteral("The picture that the calibration library refused")
            : QStringLiteral("The view when the calibration library refused one of the pictures");
    m_refused = {{markedRefusal(m_session.frames().unmarkedPicture(), blocks,
                                m_session.camera().description().orientation),
                  blocks.isEmpty() ? what : what + QStringLiteral("; the refused blocks are marked"),
                  "refused.png"}};
}

// The person at the camera of a page that calibrates under several lights.
void CalibrationRun::changeLamp(CaptureRow const& row) {
    m_session.bringLamp(row.kelvin);
    ProgressReport::say(
        QStringLiteral("The lamp of %1 K is switched on for the %2.").arg(row.kelvin).arg(row.button));
}

// Nobody else can tell when the dialog starts to save.
void CalibrationRun::prepareToSave() {
    ProgressReport::say(QStringLiteral("saving to the EEPROM..."));
    if (auto const& fault = m_session.options().fault; fault && !fault->operation)
        m_session.injectFault(*fault);
}

// The refusal's picture is shown where there is no better one.
void CalibrationRun::fail(ExitCode code, QString const& cause) {
    m_code = code;
    m_certificate.cause = cause;
    m_certificate.result = code == kExitNotSaved ? QStringLiteral("not saved")
                           : code >= kExitTooDark && code <= kExitWrongSize
                               ? QStringLiteral("refused")
                               : QStringLiteral("not calibrated");
    if (code != kExitNotSaved)
        m_certificate.pictures = m_refused;
}

// Facts are those of this moment: what measures later changes lamp and registers.
void CalibrationRun::calibrate() {
    auto const bringLight = [this](CaptureRow const& row) { changeLamp(row); };
    if (std::vector<CaptureRow> const captures = captureRows(m_page); !captures.empty())
        bringLight(captures.front());
    m_driver.onRequests = [&] { serveCaptureRows(m_page, bringLight); };
    m_run = m_driver.runAll();
    m_driver.onRequests = [] {};
    m_certificate = certifySitting("calibration", m_session, m_page, &m_lack);
}

void CalibrationRun::judgeSaves() {
    bool const hasEeprom = m_session.camera().hasEeprom();
    QString const results = resultsFile(m_run.last.statusTexts[kFileSave]);
    if (!isSaved(m_run.last.statusTexts, hasEeprom))
        fail(kExitNotSaved, causeOf(m_run, captureRows(m_page), hasEeprom));
    else if (!QFileInfo(m_output.pathOf(results)).isFile())
        fail(kExitNotSaved, QStringLiteral("The results file %1 is missing.").arg(results));
    else if (!m_lack.isEmpty()) // not every sensor's dialog reads back what it saved
        fail(kExitNotSaved, kNotHeld + m_lack + '.');
}

// The dialog's test is pressed once more without the correction and with it; what it shows then is what is
// pictured, told and judged.
void CalibrationRun::judge() {
    if (m_run.end != RunEnd::Finished || !isCalibrated(m_run.last.statusTexts)) {
        bool const hasEeprom = m_session.camera().hasEeprom();
        fail(exitCodeOf(m_run), causeOf(m_run, captureRows(m_page), hasEeprom));
        return;
    }
    ProgressReport::say(QStringLiteral("measuring once more, without the correction and with it..."));
    judgeSaves();
    bool const isMeasured = measureSitting(m_session, m_page, m_driver, m_certificate);
    m_run.last.statusTexts = m_page.statusTexts();
    if (!isMeasured)
        fail(kExitNotCalibrated, QStringLiteral("The closing measurement is missing."));
}

int CalibrationRun::run() {
    m_output.removeOthers({"certificate.html", "summary.json"}); // of another board
    calibrate();
    if (files::isInterrupted())
        return kExitInterrupted;
    judge();
    m_certificate.figures["steps"] = stepsOf(m_run.last, captureRows(m_page));
    QImage const dialog = m_dialog->grab().toImage();
    m_driver.onProgress = [](RunProgress const&) {};
    if (m_certificate.verdict != Verdict::None) {
        measureRepeatability(m_page, m_driver, m_certificate);
        if (!measureLights(m_session, m_page, m_driver, m_certificate))
            fail(kExitNotCalibrated, kNotUnderEveryLight);
    }
    if (files::isInterrupted())
        return kExitInterrupted;
    m_output.savePicture("dialog.png", dialog);
    return conclude(m_session, m_certificate, m_output, m_code);
}
} // namespace

int runCalibration(Session& session) {
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, opened); code != kExitDone)
        return code;
    if (session.options().lightKelvin && !captureRows(opened.page).empty())
        return refuse(QStringLiteral("This sensor's page names its lights; --light is not for it."));
    return CalibrationRun(session, opened).run();
}
} // namespace pictara
