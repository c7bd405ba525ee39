#include "simulator/host/recorder.h"

#include "simulator/host/message_log.h"

#include <QFileInfo>

namespace pictara {

std::unique_ptr<Recorder> Recorder::start(Options const& options, QString* error) {
    QFileInfo const folder(QFileInfo(options.recordingFile).absolutePath());
    if (!folder.isDir() || !folder.isWritable()) {
        *error = QStringLiteral("The recording %1 cannot be made in its folder.").arg(options.recordingFile);
        return nullptr;
    }
    std::unique_ptr<Recorder> recorder(new Recorder(options));
    for (QString const& library : Watching::unwatched())
        complain(QStringLiteral("The calls on the library %1 cannot be recorded.").arg(library));
    return recorder;
}

Recorder::Recorder(Options const& options)
    : m_file(options.recordingFile), m_text(recordingHead(options, placeholdersOf(options))),
      m_lines(placeholdersOf(options),
              [this](QByteArray const& line) {
                  m_text += line + '\n';
                  m_hasBegun = true;
              }),
      m_watching(m_lines, options.pluginFile) {}

bool Recorder::finish(QString* error) {
    m_lines.flush();
    // A session that did not open leaves nothing to keep.
    return !m_hasBegun || writeWhole(m_file, m_text, error);
}

} // namespace pictara
