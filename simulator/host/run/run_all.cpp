#include "simulator/host/run/run_all.h"

#include "simulator/files/interruption.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace pictara {
namespace {
// A run that shows an error, or no step at work, and no change for so long is not going to change: in every
// working step the progress moves more often.
constexpr int kStuckTicks = 5;
constexpr int kStuckFrames = 30;
constexpr int kUniformityTicks = 40;

bool isInProgress(QString const& status) { return status.startsWith(QLatin1String("In progress")); }

bool standsStill(QStringList const& texts) {
    bool const hasFailed = !texts.filter(QRegularExpression(QStringLiteral("^Error"))).isEmpty();
    return hasFailed || std::none_of(texts.begin(), texts.end(), isInProgress);
}

bool hasSolution(QStringList const& texts) {
    QString const status = texts.value(kCalibration);
    return status == QLatin1String("Done.") || status.startsWith(QLatin1String("YCbCr calibration."));
}

// A run has nothing left to do but to save to the EEPROM.
bool isSavingToEepromNext(QStringList const& texts) {
    static QString const open = QStringLiteral("Not done yet.");
    return hasSolution(texts) && texts.value(kFileSave) != open && texts.value(kEepromSave) == open;
}
std::optional<double> shownUniformity(QString const& status) {
    static QRegularExpression const pattern(QStringLiteral("^\\s*([0-9]+\\.[0-9]+)\\s*\\(Lower is better"));
    auto const match = pattern.match(status);
    return match.hasMatch() ? std::optional(match.captured(1).toDouble()) : std::nullopt;
}
} // namespace

RunDriver::RunDriver(DialogPage const& page, std::function<void()> deliverFrame, int framesPerTick,
                     int maxFrames)
    : m_page(page), m_deliverFrame(std::move(deliverFrame)), m_framesPerTick(framesPerTick),
      m_maxFrames(maxFrames) {}

void RunDriver::advanceOneTick() {
    for (int i = 0; i < m_framesPerTick; ++i) {
        if (files::isInterrupted())
            return;
        m_deliverFrame();
        ++m_progress.frames;
        QCoreApplication::processEvents();
    }
    if (m_page.isRunning() && isSavingToEepromNext(m_page.statusTexts()))
        onSaving();
    m_page.stopTimer(); // showing the page again starts its timer again
    m_page.tick();
    QCoreApplication::processEvents();
    m_progress.statusTexts = m_page.statusTexts();
    onProgress(m_progress);
    onRequests();
}

RunEnd RunDriver::watch(std::function<bool()> const& isWorking) {
    int unchangedTicks = 0, unchangedSince = m_progress.frames;
    while (isWorking()) {
        if (files::isInterrupted())
            return RunEnd::Interrupted;
        if (m_progress.frames + m_framesPerTick > m_maxFrames)
            return RunEnd::TimedOut;
        QStringList const before = m_progress.statusTexts;
        advanceOneTick();
        if (m_progress.statusTexts != before) {
            unchangedTicks = 0;
            unchangedSince = m_progress.frames;
        } else if (++unchangedTicks >= kStuckTicks && m_progress.frames - unchangedSince >= kStuckFrames &&
                   standsStill(m_progress.statusTexts) && isWorking()) {
            return RunEnd::Cancelled;
        }
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

bool isCalibrated(QStringList const& texts) {
    auto const done = [&](Step step) { return texts.value(step) == QLatin1String("Done."); };
    return done(kSetup) && done(kExposure) && done(kColourBalance) && hasSolution(texts) &&
           shownUniformity(texts.value(kUniformity));
}

bool isSaved(QStringList const& texts, bool hasEeprom) {
    QString const eeprom = texts.value(kEepromSave);
    return texts.value(kFileSave).startsWith(QLatin1String("Done: ")) &&
           (hasEeprom ? eeprom == QLatin1String("Done.") : eeprom.startsWith(QLatin1String("No EEPROM.")));
}
} // namespace pictara
