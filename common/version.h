#pragma once

#include <cstdint>

/// The plug-in's version, equal to the file version.
inline constexpr uint32_t kVersion[4] = {6, 1, 63, 61641};

/// The day of the build in the compiler's date format, for example "Nov  3 2025".
inline constexpr char kBuildDate[] = __DATE__;
