#include "simulator/host/run/progress_report.h"

#include "simulator/host/session/message_log.h"

#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <iterator>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace pictara {
namespace {
// Whether a line can be written over there.
bool isTerminal(std::FILE* stream) {
#ifdef _WIN32
    // A console moves its cursor back and clears a line only when it is told to obey.
    auto* const console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
#else
    return isatty(fileno(stream)) != 0;
#endif
}

bool inProgress(QString const& status) { return status.startsWith(QLatin1String("In progress")); }

// What stays of a status when its figures change, so that a log shows each turn once.
QString withoutFigures(QString status) {
    static QRegularExpression const figures(QStringLiteral("[0-9]+ ?%"));
    return status.remove(figures);
}

double percentOf(QString const& status) {
    static QRegularExpression const pattern(QStringLiteral("([0-9]+) ?%"));
    return std::min(pattern.match(status).captured(1).toDouble(), 100.0);
}
} // namespace

ProgressReport::ProgressReport(std::FILE* stream, DialogPage const& page)
    : m_stream(stream), m_page(page), m_terminal(isTerminal(stream)) {}

ProgressReport::~ProgressReport() {
    if (m_terminal)
        std::fputs("\r\033[K", m_stream);
    setProgressLineShown(false);
}

void ProgressReport::show(RunProgress const& progress) {
    if (m_terminal)
        showBar(progress);
    else
        showLines(progress);
    std::fflush(m_stream);
}

void ProgressReport::say(QString const& text) {
    std::fprintf(m_stream, "%s%s\n", m_terminal ? "\r\033[K" : "", text.toLocal8Bit().constData());
    std::fflush(m_stream);
}

void ProgressReport::showLines(RunProgress const& progress) {
    for (int i = 0; i < progress.statusTexts.size(); ++i) {
        QString const& status = progress.statusTexts[i];
        QString const turn = withoutFigures(status);
        bool const known = i < m_shown.size();
        if (m_shown.value(i) == turn)
            continue;
        if (!known)
            m_shown.append(QString());
        m_shown[i] = turn;
        if (known || inProgress(status)) // how the dialog looked at first is no news
            say(QStringLiteral("frame %1: %2: %3")
                    .arg(progress.frames, 4)
                    .arg(m_page.text(kSteps[i].button), status.trimmed()));
    }
}

void ProgressReport::showBar(RunProgress const& progress) {
    constexpr int kWidth = 30;
    QStringList const& texts = progress.statusTexts;
    auto const running = std::find_if(texts.begin(), texts.end(), inProgress);
    QString const step =
        running == texts.end() ? QString() : m_page.text(kSteps[running - texts.begin()].button);
    int const filled = int(std::lround(shareDone(texts) * kWidth));
    QString const bar = QString(filled, QLatin1Char('#')) + QString(kWidth - filled, QLatin1Char('.'));
    QString const line = QStringLiteral("[%1] %2 frames  %3").arg(bar).arg(progress.frames).arg(step);
    setProgressLineShown(true);
    std::fprintf(m_stream, "\r%s\033[K", line.toLocal8Bit().constData());
}

double shareDone(QStringList const& texts) {
    double steps = 0;
    for (QString const& status : texts) {
        // Later steps may stand at their end already, like the save to an EEPROM that is not there.
        if (inProgress(status))
            return (steps + percentOf(status) / 100) / double(std::size(kSteps));
        if (status.startsWith(QLatin1String("Not done yet")) || status.contains(QLatin1String("--")))
            break;
        steps += 1; // done, or as far as it goes
    }
    return steps / double(std::size(kSteps));
}
} // namespace pictara
