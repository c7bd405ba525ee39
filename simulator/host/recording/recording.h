#pragma once

#include "simulator/host/recording/placeholders.h"
#include "simulator/host/session/command_line.h"

#include <QByteArray>
#include <optional>
#include <vector>

namespace pictara {
/// A recording as its file tells it: what the session began with, and the lines of inputs and calls.
struct Recording {
    Options options; ///< those that change what the plug-in sees; the rest stands as by default
    std::vector<QByteArray> settings; ///< lines of the settings file, with placeholders
    QByteArray eeprom;                ///< 8192 bytes; empty: as the profile makes it
    std::vector<QByteArray> lines;    ///< with placeholders; inputs at the beginning of a line
    int firstLine = 0;                ///< number of the first of them in the file, from 1
};

[[nodiscard]] inline bool isInput(QByteArray const& line) { return !line.isEmpty() && line.at(0) != ' '; }

/// The head of a recording with these options: what their files hold now is what the session begins with.
[[nodiscard]] QByteArray recordingHead(Options const& options, Placeholders const& placeholders);

/// Empty with a message that names file and line when it cannot be read or is none.
[[nodiscard]] std::optional<Recording> readRecording(QString const& file, QString* error);

/// Puts what the session begins with into a folder. False with a message.
[[nodiscard]] bool layOut(Recording const& recording, QString const& folder, QString* error);

/// Of a session with these options.
[[nodiscard]] Placeholders placeholdersOf(Options const& options);

/// Writes all or nothing; false with a message.
[[nodiscard]] bool writeWhole(QString const& file, QByteArray const& contents, QString* error);
} // namespace pictara
