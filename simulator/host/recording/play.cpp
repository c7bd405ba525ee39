#include "simulator/host/recording/play.h"

#include "simulator/boundary/boundary.h"
#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/recording/player.h"
#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/run/runs.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QTemporaryDir>
#include <algorithm>

namespace pictara {
namespace {
QString textOf(QString const& file, Command const& command, size_t place, QByteArray const& replayed) {
    auto const shown = [](QByteArray const& line) {
        return line.isEmpty() ? QStringLiteral("(nothing)") : QString::fromUtf8(line.trimmed());
    };
    auto const [line, seen] =
        place < command.seen.size() ? command.seen[place] : std::pair(command.line, QByteArray());
    return QStringLiteral("%1:%2: the replay differs.\n  input:    %3 (line %4)\n  recorded: %5\n"
                          "  replayed: %6")
        .arg(file, QString::number(line), shown(command.text), QString::number(command.line), shown(seen),
             shown(replayed));
}

// The lines of calls that come from a command, in the order in which they come.
class Replay {
public:
    Replay(Options const& options)
        : m_lines(placeholdersOf(options), [this](QByteArray const& line) {
              if (line.startsWith(' ')) // not the input
                  m_seen.push_back(line);
          }) {}

    /// The first difference, for the user; empty when what came is what was seen then.
    [[nodiscard]] QString differenceIn(Player& player, Command const& command, QString const& file) {
        m_seen.clear();
        QString cause;
        bool const isDone = player.perform(command, &cause);
        m_lines.flush();
        if (!isDone)
            m_seen.push_back(cause.toUtf8());
        size_t place = 0;
        while (place < m_seen.size() && place < command.seen.size() &&
               m_seen[place] == command.seen[place].second)
            ++place;
        m_calls += int(place);
        return place == std::max(m_seen.size(), command.seen.size()) || files::isInterrupted()
                   ? QString()
                   : textOf(file, command, place, place < m_seen.size() ? m_seen[place] : QByteArray());
    }

    [[nodiscard]] SeenLines& lines() { return m_lines; }
    [[nodiscard]] int calls() const { return m_calls; }

private:
    std::vector<QByteArray> m_seen;
    SeenLines m_lines;
    int m_calls = 0;
};
} // namespace

int runScript(Session& session, Script const& script) {
    QString const& file = script.options.scriptFile;
    Player player(session);
    ScriptEnd end;
    end.commands = script.commands.size();
    for (Command const& command : script.commands) {
        QString error;
        bool const isDone = player.perform(command, &error);
        if (files::isInterrupted())
            return kExitInterrupted;
        if (!isDone) {
            end.cause = QStringLiteral("%1:%2: %3").arg(file, QString::number(command.line), error);
            break;
        }
        ++end.done;
    }
    end.frames = player.progress().frames;
    if (end.cause.isEmpty())
        ProgressReport::say(
            QStringLiteral("%1: done, %2 commands.").arg(file, QString::number(end.commands)));
    ExitCode const code = certifyScript(session, player.page(), end);
    return player.hasTimedOut() && !files::isInterrupted() ? kExitTimeout : code;
}

int replayRecording(Options const& given) {
    QString error;
    Options fresh;
    fresh.pluginFile = given.pluginFile;
    QTemporaryDir const folder;
    fresh.outputFolder = folder.path();
    auto const script = readScript(given.replayedRecordingFile, fresh, &error);
    if (!script || !layOut(*script, folder.path(), &error))
        return refuse(error);
    Replay replay(script->options);
    QString difference;
    {
        Watching const watching(replay.lines(), fresh.pluginFile);
        auto const session = Session::open(script->options, &error);
        if (!session)
            return refuse(error);
        Player player(*session);
        for (Command const& command : script->commands)
            if (difference = replay.differenceIn(player, command, given.replayedRecordingFile);
                !difference.isEmpty() || files::isInterrupted())
                break;
    }
    if (files::isInterrupted())
        return kExitInterrupted;
    if (!difference.isEmpty()) {
        complain(difference);
        return kExitNotCalibrated;
    }
    std::printf("%s: all %d calls after %d inputs are equal.\n", qPrintable(given.replayedRecordingFile),
                replay.calls(), int(script->commands.size()));
    return kExitDone;
}

int recordWhile(Options const& options, std::function<int()> const& sit) {
    QString error;
    if (!files::isReplaceable(options.recordingFile, &error))
        return refuse(error);
    QByteArray const beginning = beginningOf(options);
    QByteArray text;
    SeenLines lines(placeholdersOf(options), [&](QByteArray const& line) { text += line + '\n'; });
    int code = kExitDone;
    {
        Watching const watching(lines, options.pluginFile);
        code = sit();
    }
    lines.flush();
    // A session that did not open leaves nothing to keep.
    if (text.isEmpty() || files::replace(options.recordingFile, beginning + text, &error))
        return code;
    complain(error);
    return code == kExitDone ? kExitNotCalibrated : code;
}
} // namespace pictara
