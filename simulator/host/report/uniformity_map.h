#pragma once

#include "simulator/host/report/block_report.h"

#include <QGradient>
#include <QImage>

namespace pictara {
/// The colours of deviations from none to the largest one shown, by increasing lightness.
[[nodiscard]] QGradientStops deviationColours();

/// The deviation at which the colours end: it follows the largest one up at once, and down only when that is
/// well below.
[[nodiscard]] double nextColourEnd(double present, double largest);

/// A picture of one pixel a block, in the colours of the blocks' deviations; `end` is where they end.
[[nodiscard]] QImage uniformityMap(BlockReport const& blocks, double end);
} // namespace pictara
