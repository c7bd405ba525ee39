#pragma once

#include "simulator/pictures/block_report.h"

#include <QGradient>
#include <QImage>

namespace pictara {
/// The colours of deviations from none to the largest one shown, by increasing lightness.
[[nodiscard]] QGradientStops deviationColours();
/// Those of what lies below or above zero, which is in the middle.
[[nodiscard]] QGradientStops signedColours();

/// A picture of one pixel a value, row by row from the top left; the colours span `low` to `high`. Null for
/// no values.
[[nodiscard]] QImage colourMap(std::vector<double> const& values, int columns, double low, double high,
                               QGradientStops const& colours);

/// The deviation at which the colours end: it follows the largest one up at once, and down only when that is
/// well below.
[[nodiscard]] double nextColourEnd(double present, double largest);

/// A picture of one pixel a block, in the colours of the blocks' deviations; `end` is where they end.
[[nodiscard]] QImage uniformityMap(BlockReport const& blocks, double end);
} // namespace pictara
