#include "simulator/host/run/recording_replay.h"

#include "simulator/files/interruption.h"
#include "simulator/host/recording/input_player.h"
#include "simulator/host/recording/recorded_lines.h"
#include "simulator/host/recording/recording_comparison.h"
#include "simulator/host/run/progress_report.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/session/watching.h"

#include <QTemporaryDir>

namespace pictara {
namespace {
// The progress is told in the dialog's own words, as that of a run.
class ReplayProgress {
public:
    void show(QByteArray const& input, DialogPage const& page) {
        m_state.frames += input.startsWith("frame ");
        if (input != "tick" || !page)
            return;
        if (!m_report)
            m_report.emplace(stdout, page);
        ++m_state.ticks;
        m_state.statusTexts = page.statusTexts();
        m_report->show(m_state);
    }

private:
    RunProgress m_state;
    std::optional<ProgressReport> m_report;
};

void replayAll(Session& session, RecordingComparison& comparison, RecordedLines& lines,
               Placeholders const& placeholders) {
    InputPlayer player(session);
    ReplayProgress progress;
    for (QByteArray input = comparison.nextInput(); !input.isEmpty() && !files::isInterrupted();
         input = comparison.nextInput()) {
        QString cause;
        if (!player.play(QString::fromUtf8(placeholders.reveal(input)), &cause))
            comparison.refuse(cause.toUtf8());
        lines.flush();
        progress.show(input, player.page());
    }
}
} // namespace

int runRecordingReplay(Options const& given) {
    QString error;
    auto const recording = readRecording(given.replayedRecordingFile, &error);
    QTemporaryDir const folder;
    if (!recording || !layOut(*recording, folder.path(), &error)) {
        complain(error);
        return kExitUsage;
    }
    Options options = recording->options;
    options.outputFolder = folder.path();
    options.pluginFile = given.pluginFile;

    RecordingComparison comparison(*recording);
    Placeholders const placeholders = placeholdersOf(options);
    RecordedLines lines(placeholders, [&](QByteArray const& line) { comparison.compare(line); });
    {
        Watching const watching(lines, options.pluginFile);
        auto const session = Session::open(options, &error);
        if (!session) {
            complain(error);
            return kExitUsage;
        }
        replayAll(*session, comparison, lines, placeholders);
    }
    if (files::isInterrupted())
        return kExitInterrupted;
    if (comparison.difference()) {
        complain(textOf(*comparison.difference(), given.replayedRecordingFile));
        return kExitNotCalibrated;
    }
    std::printf("%s: all %d calls after %d inputs are equal.\n", qPrintable(given.replayedRecordingFile),
                comparison.calls(), comparison.inputs());
    return kExitDone;
}
} // namespace pictara
