#pragma once

#include <QString>
#include <cstdint>

namespace kestra {
/// The plug-in's version, equal to the file version.
inline constexpr uint32_t kVersion[] = {6, 1, 63, 61641};

/// The day of the build in the compiler's date format, for example "Nov  3 2025".
extern char const kBuildDate[];

/// Both, as every page shows them, in two lines.
[[nodiscard]] QString versionText();
} // namespace kestra
