#include "simulator/host/run_all.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>
#include <iterator>
#include <utility>

namespace pictara {
namespace {

// A run that shows an error and no change for so long is not going to change: in every working step the
// progress moves more often.
constexpr int kStuckTicks = 5;
constexpr int kStuckFrames = 30;
constexpr int kUniformityTicks = 40;

bool showsError(QStringList const& texts) {
    return std::any_of(texts.begin(), texts.end(),
                       [](QString const& text) { return text.startsWith(QLatin1String("Error")); });
}

} // namespace

RunDriver::RunDriver(DialogPage const& page, std::function<void()> deliverFrame, int framesPerTick,
                     int maxFrames)
    : m_page(page), m_deliverFrame(std::move(deliverFrame)), m_framesPerTick(framesPerTick),
      m_maxFrames(maxFrames) {}

void RunDriver::advanceOneTick() {
    for (int i = 0; i < m_framesPerTick; ++i) {
        m_deliverFrame();
        ++m_progress.frames;
        QCoreApplication::processEvents();
    }
    m_page.stopTimer(); // showing the page again starts its timer again
    m_page.tick();
    ++m_progress.ticks;
    QCoreApplication::processEvents();
    m_progress.statusTexts = m_page.statusTexts();
    m_observer(m_progress);
}

RunEnd RunDriver::watch(std::function<bool()> const& isWorking) {
    int unchangedTicks = 0, unchangedSince = m_progress.frames;
    while (isWorking()) {
        if (m_progress.frames + m_framesPerTick > m_maxFrames)
            return RunEnd::TimedOut;
        QStringList const before = m_progress.statusTexts;
        advanceOneTick();
        if (m_progress.statusTexts != before) {
            unchangedTicks = 0;
            unchangedSince = m_progress.frames;
        } else if (++unchangedTicks >= kStuckTicks && m_progress.frames - unchangedSince >= kStuckFrames &&
                   showsError(m_progress.statusTexts) && isWorking()) {
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
    RunResult const result{end, m_progress};
    if (m_page.isRunning())
        m_page.press("Run_All");
    return result;
}

RunResult RunDriver::runFrom(Step first) {
    m_page.stopTimer();
    RunEnd end = RunEnd::Finished;
    for (int step = first; step < int(std::size(kSteps)) && end == RunEnd::Finished; ++step) {
        // The calibration measures the uniformity itself.
        if (step == kUniformity || !m_page.press(kSteps[step].button))
            continue;
        end =
            watch([&] { return m_page.text(kSteps[step].status).startsWith(QLatin1String("In progress")); });
    }
    m_progress.statusTexts = m_page.statusTexts();
    return {end, m_progress};
}

bool RunDriver::awaitUniformity(double* figure) {
    for (int tick = 0; tick < kUniformityTicks; ++tick) {
        advanceOneTick();
        if (shownUniformity(m_progress.statusTexts.at(kUniformity), figure))
            return true;
    }
    return false;
}

bool shownUniformity(QString const& status, double* figure) {
    static QRegularExpression const pattern(QStringLiteral("^\\s*([0-9]+\\.[0-9]+)\\s*\\(Lower is better"));
    auto const match = pattern.match(status);
    if (match.hasMatch())
        *figure = match.captured(1).toDouble();
    return match.hasMatch();
}

bool allStepsDone(QStringList const& texts) {
    double figure = 0;
    auto const done = [&](Step step) { return texts.value(step) == QLatin1String("Done."); };
    auto const startsWith = [&](Step step, char const* text) {
        return texts.value(step).startsWith(QLatin1String(text));
    };
    bool const calibrated = done(kCalibration) || startsWith(kCalibration, "YCbCr calibration.");
    return done(kSetup) && done(kExposure) && done(kColourBalance) && calibrated &&
           shownUniformity(texts.value(kUniformity), &figure) && startsWith(kFileSave, "Done: ") &&
           (done(kEepromSave) || startsWith(kEepromSave, "No EEPROM."));
}

} // namespace pictara
