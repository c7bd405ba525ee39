#include "simulator/host/recording/recording_comparison.h"

namespace pictara {
QByteArray RecordingComparison::nextInput() {
    if (m_difference || m_next >= m_recording.lines.size())
        return {};
    // The replay made less calls than recorded, or did not even do what it was told last.
    if (!isInput(m_recording.lines[m_next]) || (m_inputs > 0 && m_next == m_input)) {
        differ({});
        return {};
    }
    m_input = m_next;
    ++m_inputs;
    return m_recording.lines[m_next];
}

void RecordingComparison::compare(QByteArray const& replayed) {
    if (m_difference)
        return;
    if (m_next < m_recording.lines.size() && m_recording.lines[m_next] == replayed)
        ++m_next;
    else
        differ(replayed);
}

void RecordingComparison::differ(QByteArray const& replayed) {
    if (m_difference)
        return;
    bool const isWithin = m_next < m_recording.lines.size();
    m_difference = {.line = m_recording.firstLine + int(m_next),
                    .recorded = isWithin ? m_recording.lines[m_next] : QByteArray(),
                    .replayed = replayed,
                    .inputLine = m_recording.firstLine + int(m_input),
                    .input = m_recording.lines[m_input]};
}

QString textOf(Difference const& difference, QString const& file) {
    auto const shown = [](QByteArray const& line) {
        return line.isEmpty() ? QStringLiteral("(nothing)") : QString::fromUtf8(line.trimmed());
    };
    return QStringLiteral(
               "%1:%2: the replay differs.\n  input:    %3 (line %4)\n  recorded: %5\n  replayed: %6")
        .arg(file, QString::number(difference.line), shown(difference.input),
             QString::number(difference.inputLine), shown(difference.recorded), shown(difference.replayed));
}
} // namespace pictara
