#include "simulator/host/run/runs.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/sitting.h"
#include "simulator/host/run/measurement.h"
#include "simulator/host/run/verdict.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>
#include <QPixmap>
#include <QRegularExpression>
#include <algorithm>

namespace pictara {
namespace {
constexpr char kNotCalibrated[] = "not calibrated";
constexpr char kNotSaved[] = "calibrated, not saved";

// The file's name without its folder; empty when none was saved.
QString resultsFile(RunProgress const& last) {
    // One page cuts the name at "/" alone, so that what lies before "\\" stays.
    static QRegularExpression const name(QStringLiteral("^Done: (?:.*[/\\\\])?(.*)"));
    return name.match(last.statusTexts[kFileSave]).captured(1);
}

// They stay, and must not be taken for the run's own.
QStringList earlierResults(QDir const& folder, QString const& own) {
    QStringList found;
    for (QString const& name : folder.entryList({"*.ini"}, QDir::Files, QDir::Name)) {
        QString error; // what cannot be read is no results file
        auto const text = files::read(folder.filePath(name), files::kMostText, &error);
        if (name != own && text && text->contains("[Lens Correction]"))
            found << name;
    }
    return found;
}

class CalibrationRun {
public:
    CalibrationRun(Session& session, HeadlessDialog const& opened);
    [[nodiscard]] int run();

private:
    void calibrate();
    void judge();
    void judgeSaves();
    void judgeLights();
    void report(QImage const& dialog);
    void conclude(char const* result, ExitCode code, QString const& cause);

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
    QString m_lack;                          // what the EEPROM lacks
    Section m_refused{"refused", "Refused"}; // the picture that the library refused
    Section m_lights{"lights", {}, Layout::Columns};
    EvennessStates m_states;
    Report m_report{"calibration", "calibrated"};
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
    if (!m_refused.pictures.empty() || lastSolverCause().text.isEmpty())
        return;
    QString const blocks = lastSolverCause().blocks;
    // A page that takes several pictures has them solved when it has all.
    QString const what =
        captureRows(m_page).empty()
            ? QStringLiteral("The picture that the calibration library refused")
            : QStringLiteral("The view when the calibration library refused one of the pictures");
    m_refused.pictures = {{markedRefusal(m_session.frames().unmarkedPicture(), blocks,
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

void CalibrationRun::conclude(char const* result, ExitCode code, QString const& cause) {
    m_report.result = result;
    m_report.cause = cause;
    m_code = code;
}

// Facts are those of this moment: what measures later changes lamp and registers.
void CalibrationRun::calibrate() {
    auto const bringLight = [this](CaptureRow const& row) { changeLamp(row); };
    if (std::vector<CaptureRow> const captures = captureRows(m_page); !captures.empty())
        bringLight(captures.front());
    m_driver.onRequests = [&] { serveCaptureRows(m_page, bringLight); };
    m_run = m_driver.runAll();
    m_driver.onRequests = [] {};
    m_report.sections = {sceneSection(m_session), registerSection(m_session),
                         eepromSection(m_session, m_page.text("Prom_Label"), &m_lack)};
}

void CalibrationRun::judgeSaves() {
    bool const hasEeprom = m_session.camera().hasEeprom();
    QString const results = resultsFile(m_run.last);
    if (!isSaved(m_run.last.statusTexts, hasEeprom))
        conclude(kNotSaved, kExitNotSaved, causeOf(m_run, captureRows(m_page), hasEeprom));
    else if (!QFileInfo(m_output.pathOf(results)).isFile())
        conclude(kNotSaved, kExitNotSaved, QStringLiteral("The results file %1 is missing.").arg(results));
    else if (!m_lack.isEmpty()) // not every sensor's dialog reads back what it saved
        conclude(kNotSaved, kExitNotSaved,
                 QStringLiteral("The EEPROM does not hold the solution, whatever the dialog shows: %1.")
                     .arg(m_lack));
}

// The dialog's test is pressed once more without the correction and with it; what it shows then is what is
// pictured, told and judged.
void CalibrationRun::judge() {
    if (m_run.end != RunEnd::Finished || !isCalibrated(m_run.last.statusTexts)) {
        bool const hasEeprom = m_session.camera().hasEeprom();
        conclude(kNotCalibrated, exitCodeOf(m_run), causeOf(m_run, captureRows(m_page), hasEeprom));
        return;
    }
    ProgressReport::say(QStringLiteral("measuring once more, without the correction and with it..."));
    judgeSaves();
    m_states = measureEvenness(m_session, m_page, m_driver);
    m_run.last.statusTexts = m_page.statusTexts();
    if (!m_states[0] || !m_states[1])
        conclude(kNotCalibrated, kExitNotCalibrated, QStringLiteral("The closing measurement is missing."));
    else if (m_code == kExitDone && m_states[1]->isBeyondLimit())
        conclude("calibrated, uniformity beyond the limit", kExitBeyondLimit,
                 QStringLiteral("The uniformity is beyond the dialog's limit."));
}

// Under each light of the page, and one between.
void CalibrationRun::judgeLights() {
    std::vector<double> lights;
    for (CaptureRow const& row : captureRows(m_page))
        lights.push_back(row.kelvin);
    if (!m_states[0] || !m_states[1] || lights.empty())
        return;
    m_driver.onProgress = [](RunProgress const&) {};
    m_lights = measureLights(m_session, m_page, m_driver, lights, [](double kelvin) {
        ProgressReport::say(QStringLiteral("measuring each table under %1 K...").arg(kelvin));
    });
    for (Fact const& fact : m_lights.facts)
        if (std::count(fact.values.begin(), fact.values.end(), QJsonValue()) > 0)
            conclude(kNotCalibrated, kExitNotCalibrated,
                     QStringLiteral("The dialog did not show the uniformity under every light."));
}

void CalibrationRun::report(QImage const& dialog) {
    m_output.savePicture("dialog.png", dialog);
    std::vector<Section> sections = evennessSections(m_states);
    if (m_report.result == QLatin1String(kNotCalibrated))
        sections.push_back(m_refused);
    sections.push_back(m_lights);
    sections.insert(sections.end(), m_report.sections.begin(), m_report.sections.end());
    if (QStringList const earlier = earlierResults(m_session.outputFolder(), resultsFile(m_run.last));
        !earlier.isEmpty())
        sections.push_back({"files",
                            "Files",
                            Layout::One,
                            {{"earlier_results", "results files of earlier runs", {earlier.join(", ")}}}});
    m_report.sections = sections;
    writeReport(m_report, m_output);
}

int CalibrationRun::run() {
    calibrate();
    if (files::isInterrupted())
        return kExitInterrupted;
    judge();
    m_report.sections.push_back(stepSection(m_run.last, captureRows(m_page)));
    QImage const dialog = m_dialog->grab().toImage();
    judgeLights();
    if (files::isInterrupted())
        return kExitInterrupted;
    report(dialog);
    ProgressReport::say(QLatin1Char('\n') + reportText(m_report));
    if (!m_report.cause.isEmpty())
        complain(m_report.cause);
    return m_output.failed() ? kExitNotCalibrated : m_code;
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
