#pragma once

#include <QByteArray>

/// Whether a path, in the local 8-bit encoding, names an existing directory. An empty path does not.
[[nodiscard]] bool directoryExists(QByteArray const& path);
