#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace pictara {
/// The words of a line of a script, apart by blanks; a word with blanks stands in quotes, in which two quotes
/// are one. A word that begins with "#" begins a comment. Empty with the cause when a quote is not closed.
[[nodiscard]] std::optional<QStringList> wordsOf(QString const& line, QString* error);

/// The line of which `wordsOf` makes these words.
[[nodiscard]] QString lineOf(QStringList const& words);

/// A number with as many digits as it takes to read the same one.
[[nodiscard]] QString exactly(double number);
} // namespace pictara
