#include "simulator/host/recording/recorder.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/recording/script.h"
#include "simulator/host/session/message_log.h"

namespace pictara {
std::unique_ptr<Recorder> Recorder::start(Options const& options, QString* error) {
    if (!files::isReplaceable(options.recordingFile, error)) {
        *error = QStringLiteral("The recording %1 cannot be written: %2").arg(options.recordingFile, *error);
        return nullptr;
    }
    std::unique_ptr<Recorder> recorder(new Recorder(options));
    for (QString const& library : Watching::unwatched())
        complain(QStringLiteral("The calls on the library %1 cannot be recorded.").arg(library));
    return recorder;
}

Recorder::Recorder(Options const& options)
    : m_file(options.recordingFile), m_text(beginningOf(options)), m_lines(placeholdersOf(options),
                                                                           [this](QByteArray const& line) {
                                                                               m_text += line + '\n';
                                                                               m_hasBegun = true;
                                                                           }),
      m_watching(m_lines, options.pluginFile) {}

bool Recorder::finish(QString* error) {
    m_lines.flush();
    // A session that did not open leaves nothing to keep.
    return !m_hasBegun || files::write(m_file, m_text, error);
}
} // namespace pictara
