#pragma once

#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/session/command_line.h"
#include "simulator/boundary/boundary.h"

#include <memory>

namespace pictara {
/// Keeps all that crosses the boundary during a session in a file. It is started before the session and
/// finished after it, so that both ends are in it.
class Recorder {
public:
    /// Null with a message when the file cannot be made in its folder. What the options' files hold now
    /// becomes the recording's head.
    [[nodiscard]] static std::unique_ptr<Recorder> start(Options const& options, QString* error);

    /// Writes the file, all or nothing; false with a message.
    [[nodiscard]] bool finish(QString* error);

private:
    explicit Recorder(Options const& options);

    QString const m_file;
    QByteArray m_text;
    bool m_hasBegun = false;
    SeenLines m_lines;
    Watching m_watching;
};
} // namespace pictara
