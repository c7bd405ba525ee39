#include "simulator/host/recording/play.h"

#include "simulator/files/interruption.h"
#include "simulator/host/recording/player.h"
#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/run/script_report.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/session/watching.h"

#include <QTemporaryDir>

namespace pictara {
namespace {
// Compares the calls that come from a command with those that came from it when it was recorded.
class Comparison {
public:
    explicit Comparison(QString const& file) : m_file(file) {}

    void begin(Command const& command) {
        m_command = &command;
        m_next = 0;
    }
    void compare(QByteArray const& line) {
        if (!m_command || !line.startsWith(' ')) // an input
            return;
        if (m_next < m_command->seen.size() && m_command->seen[m_next].second == line)
            ++m_next, ++m_calls;
        else
            differ(line);
    }
    void end() {
        if (m_next < m_command->seen.size())
            differ({});
    }
    /// `replayed` came instead of what was recorded; the first one counts.
    void differ(QByteArray const& replayed) {
        if (!m_difference.isEmpty())
            return;
        auto const shown = [](QByteArray const& line) {
            return line.isEmpty() ? QStringLiteral("(nothing)") : QString::fromUtf8(line.trimmed());
        };
        auto const& seen = m_command->seen;
        bool const isWithin = m_next < seen.size();
        int const line = isWithin ? seen[m_next].first : m_command->line;
        m_difference =
            QStringLiteral("%1:%2: the replay differs.\n  input:    %3 (line %4)\n"
                           "  recorded: %5\n  replayed: %6")
                .arg(m_file, QString::number(line), shown(m_command->text), QString::number(m_command->line),
                     shown(isWithin ? seen[m_next].second : QByteArray()), shown(replayed));
    }

    [[nodiscard]] QString const& difference() const { return m_difference; }
    [[nodiscard]] int calls() const { return m_calls; }

private:
    QString const m_file;
    Command const* m_command = nullptr;
    size_t m_next = 0; ///< of what was seen
    int m_calls = 0;
    QString m_difference;
};

void replayAll(Session& session, Script const& script, SeenLines& lines, Comparison& comparison) {
    Player player(session, script.options);
    for (Command const& command : script.commands) {
        QString cause;
        comparison.begin(command);
        bool const isDone = player.perform(command, &cause);
        lines.flush();
        if (!isDone)
            comparison.differ(cause.toUtf8());
        comparison.end();
        if (files::isInterrupted() || !comparison.difference().isEmpty())
            return;
    }
}
} // namespace

int runScript(Session& session, Script const& script) {
    QString const& file = script.options.scriptFile;
    Player player(session, script.options);
    ScriptEnd end{.commands = script.commands.size()};
    for (Command const& command : script.commands) {
        QString error;
        bool const isDone = player.perform(command, &error);
        if (files::isInterrupted())
            return kExitInterrupted;
        if (!isDone) {
            end.cause = QStringLiteral("%1:%2: %3").arg(file).arg(command.line).arg(error);
            break;
        }
        ++end.done;
    }
    end.state = player.progress();
    OutputFolder output(session.outputFolder());
    QString const page = reportScript(session, player.dialog().page, script.options, end, output);
    if (files::isInterrupted())
        return kExitInterrupted;
    if (!end.cause.isEmpty())
        complain(end.cause);
    else
        player.say(QStringLiteral("%1: done, %2 commands.").arg(file).arg(end.commands));
    if (!output.failed())
        player.say(QStringLiteral("The report is %1.").arg(page));
    if (player.hasTimedOut())
        return kExitTimeout;
    return output.failed() || !end.cause.isEmpty() ? kExitNotCalibrated : kExitDone;
}

int replayRecording(Options const& given) {
    QString error;
    Options fresh;
    fresh.pluginFile = given.pluginFile;
    QTemporaryDir const folder;
    fresh.outputFolder = folder.path();
    auto const script = readScript(given.replayedRecordingFile, fresh, &error);
    if (!script || !layOut(*script, folder.path(), &error)) {
        complain(error);
        return kExitUsage;
    }
    Comparison comparison(given.replayedRecordingFile);
    SeenLines lines(placeholdersOf(script->options),
                    [&](QByteArray const& line) { comparison.compare(line); });
    {
        Watching const watching(lines, fresh.pluginFile);
        auto const session = Session::open(script->options, &error);
        if (!session) {
            complain(error);
            return kExitUsage;
        }
        replayAll(*session, *script, lines, comparison);
    }
    if (files::isInterrupted())
        return kExitInterrupted;
    if (!comparison.difference().isEmpty()) {
        complain(comparison.difference());
        return kExitNotCalibrated;
    }
    std::printf("%s: all %d calls after %d inputs are equal.\n", qPrintable(given.replayedRecordingFile),
                comparison.calls(), int(script->commands.size()));
    return kExitDone;
}
} // namespace pictara
