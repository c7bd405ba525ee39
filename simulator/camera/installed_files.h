#pragma once

#include <QDir>
#include <QString>

namespace simulator {
/// The folder of this library's own file.
[[nodiscard]] QString libraryFolder();

/// The folder of the installed profiles, beside the library.
[[nodiscard]] QDir profileFolder();
} // namespace simulator
