#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Files that users name; an error tells its file's name and the reason. Only regular ones are opened: a pipe
/// or a device may never answer, or never end, and a rename would put a file in its place. A link to a
/// regular file counts as one, and stays a link.
namespace files {
/// Bytes that no text written by hand comes near.
inline constexpr qint64 kMostText = 1 << 20;

/// The folder of the library that this code is linked into, wherever a host has loaded it from: its data
/// files lie beside it. Empty when the system does not tell.
[[nodiscard]] QString libraryFolder();

/// What a file of at most `most` bytes holds; empty, with an `error`, for any other.
[[nodiscard]] std::optional<QByteArray> read(QString const& name, qint64 most, QString* error);

/// Whether `replace` would find a place for its file, so that the user is told before the work and not after
/// it. False with an `error`.
[[nodiscard]] bool isReplaceable(QString const& name, QString* error);

/// Writes under another name and renames: whatever fails, the file is the old or the new one. False, with an
/// `error`, when it is the old one.
[[nodiscard]] bool replace(QString const& name, QByteArray const& contents, QString* error);
} // namespace files
