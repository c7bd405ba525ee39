#pragma once

#include <QString>

namespace files {
/// The folder of the library that this code is linked into, wherever a host has loaded it from: data files
/// lie beside it. Empty when the system does not tell.
[[nodiscard]] QString libraryFolder();
} // namespace files
