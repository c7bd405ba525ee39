#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace pictara {
enum class ScriptVerb { Press, Set, Light, Frames, Tick, Fault, Expect, Wait, Screenshot };

/// A line of a script.
struct ScriptCommand {
    ScriptVerb verb;
    QStringList arguments; ///< as many as the verb takes
    int line = 0;          ///< in the file, from 1
};

/// Reads a script: a command a line, words apart by blanks, texts with blanks in quotes, comments from a word
/// that begins with "#". Empty with "FILE:LINE: cause" in `error`; numbers are checked, names of widgets are
/// not.
[[nodiscard]] std::optional<std::vector<ScriptCommand>> readScript(QString const& file, QString* error);

/// True when the whole text is the pattern's, in which "*" stands for any text.
[[nodiscard]] bool matches(QString const& text, QString const& pattern);
} // namespace pictara
