#include "simulator/host/run/run_all.h"

#include "simulator/files/interruption.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>
#include <cstdio>
#include <utility>

namespace pictara {
namespace {
constexpr int kFramesPerTick = 3, kMostFrames = 2000;
// A run that shows an error, or no step at work, and no change for so long is not going to change: in every
// working step the progress moves more often.
constexpr int kStuckFrames = 30;
constexpr int kUniformityTicks = 40;

// Button, colour temperature and status.
constexpr char const* kCaptureRows[][3] = {
    {"Incandescent_Image", "Incandescent_Temp", "Incandescent_Status"},
    {"Fluorescent_Image", "Fluorescent_Temp", "Fluorescent_Status"},
    {"Daylight_Image", "Daylight_Temp", "Daylight_Status"},
};

bool standsStill(QStringList const& texts) {
    bool const hasFailed = !texts.filter(QRegularExpression(QStringLiteral("^Error"))).isEmpty();
    return hasFailed || std::none_of(texts.begin(), texts.end(), isInProgress);
}

// A run has nothing left to do but to save to the EEPROM.
bool isSavingToEepromNext(QStringList const& texts) {
    static QString const open = QStringLiteral("Not done yet.");
    return texts.value(kFileSave) != open && texts.value(kEepromSave) == open;
}

std::optional<double> shownUniformity(QString const& status) {
    static QRegularExpression const pattern(QStringLiteral("^\\s*([0-9]+\\.[0-9]+)\\s*\\(Lower is better"));
    auto const match = pattern.match(status);
    return match.hasMatch() ? std::optional(match.captured(1).toDouble()) : std::nullopt;
}
} // namespace

// What a person presses meanwhile waits for the end of the run.
static void letEventsIn() { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }

void RunDriver::advanceOneTick() {
    for (int i = 0; i < kFramesPerTick; ++i) {
        if (files::isInterrupted())
            return;
        m_deliverFrame();
        ++m_progress.frames;
        letEventsIn();
    }
    if (m_page.isRunning() && isSavingToEepromNext(m_page.statusTexts()))
        onSaving();
    m_page.tick();
    letEventsIn();
    m_progress.statusTexts = m_page.statusTexts();
    onProgress(m_progress);
    onRequests();
}

RunEnd RunDriver::watch(std::function<bool()> const& isWorking) {
    int unchangedSince = m_progress.frames;
    while (isWorking()) {
        if (files::isInterrupted())
            return RunEnd::Interrupted;
        if (m_progress.frames + kFramesPerTick > kMostFrames)
            return RunEnd::TimedOut;
        QStringList const before = m_progress.statusTexts;
        advanceOneTick();
        if (m_progress.statusTexts != before)
            unchangedSince = m_progress.frames;
        else if (m_progress.frames - unchangedSince >= kStuckFrames && standsStill(m_progress.statusTexts) &&
                 isWorking())
            return RunEnd::Cancelled;
    }
    return RunEnd::Finished;
}

RunResult RunDriver::runAll() {
    m_progress = {};
    m_page.stopTimer();
    m_page.press("Run_All");
    RunEnd const end = watch([this] { return m_page.isRunning(); });
    RunResult result{end, m_progress};
    if (m_page.isRunning())
        m_page.press("Run_All");
    return result;
}

bool RunDriver::adjustToLight() {
    m_page.stopTimer();
    for (Step const step : {kExposure, kColourBalance}) {
        auto const isWorking = [&] { return isInProgress(m_page.text(kSteps[step].status)); };
        if (m_page.press(kSteps[step].button) && watch(isWorking) != RunEnd::Finished)
            return false;
    }
    return true;
}

std::optional<double> RunDriver::awaitUniformity() {
    for (int tick = 0; tick < kUniformityTicks && !files::isInterrupted(); ++tick) {
        advanceOneTick();
        if (auto const figure = shownUniformity(m_progress.statusTexts.at(kUniformity)))
            return figure;
    }
    return std::nullopt;
}

void ProgressReport::show(RunProgress const& progress) {
    static QRegularExpression const figures(QStringLiteral("[0-9]+ ?%"));
    for (int i = 0; i < progress.statusTexts.size(); ++i) {
        QString const& status = progress.statusTexts[i];
        // What stays when its figures change, so that each turn is shown once.
        QString const turn = QString(status).remove(figures);
        bool const known = m_shown.contains(i);
        if (std::exchange(m_shown[i], turn) == turn)
            continue;
        if (known || isInProgress(status)) // how the dialog looked at first is no news
            say(QStringLiteral("frame %1: %2: %3")
                    .arg(progress.frames, 4)
                    .arg(m_page.text(kSteps[i].button), status.trimmed()));
    }
}

void ProgressReport::say(QString const& text) {
    std::printf("%s\n", text.toLocal8Bit().constData());
    std::fflush(stdout);
}

bool isInProgress(QString const& status) { return status.startsWith(QLatin1String("In progress")); }

bool isCalibrated(QStringList const& texts) {
    auto const done = [&](Step step) { return texts.value(step) == QLatin1String("Done."); };
    return done(kSetup) && done(kExposure) && done(kColourBalance) &&
           (done(kCalibration) ||
            texts.value(kCalibration).startsWith(QLatin1String("YCbCr calibration."))) &&
           shownUniformity(texts.value(kUniformity));
}

bool isSaved(QStringList const& texts, bool hasEeprom) {
    QString const eeprom = texts.value(kEepromSave);
    return texts.value(kFileSave).startsWith(QLatin1String("Done: ")) &&
           (hasEeprom ? eeprom == QLatin1String("Done.") : eeprom.startsWith(QLatin1String("No EEPROM.")));
}

std::vector<CaptureRow> captureRows(DialogPage const& page) {
    std::vector<CaptureRow> rows;
    for (auto const& [button, temperature, status] : kCaptureRows)
        if (QString const text = page.text(button); !text.isEmpty())
            rows.push_back({button, text, page.text(temperature).toDouble(), page.text(status).trimmed()});
    return rows;
}

void serveCaptureRows(DialogPage& page, std::function<void(CaptureRow const&)> const& bringLight) {
    CaptureRow const* waiting = nullptr;
    std::vector<CaptureRow> const rows = captureRows(page);
    for (CaptureRow const& row : rows) {
        if (isInProgress(row.status))
            return;
        if (!waiting && row.status.startsWith(QLatin1String("Waiting")))
            waiting = &row;
    }
    if (!waiting || !page.isEnabled(waiting->name))
        return;
    bringLight(*waiting);
    page.press(waiting->name);
}
} // namespace pictara
