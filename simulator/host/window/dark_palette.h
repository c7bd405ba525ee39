#pragma once

#include <QPalette>

namespace pictara {
/// Light text on dark ground, for a style that takes its colours from the palette.
[[nodiscard]] QPalette darkPalette();
} // namespace pictara
