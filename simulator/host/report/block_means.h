#pragma once

#include "simulator/host/session/row_source.h"

#include <QRect>
#include <array>
#include <vector>

namespace pictara {
/// Red, green, blue.
using Colour = std::array<double, 3>;

/// Luminance of linear sRGB (IEC 61966-2-1).
[[nodiscard]] double luminance(Colour const& colour);

/// Cells that cover a picture without a gap, row by row; at most one for each pixel. Rows at the top can be
/// left out.
[[nodiscard]] std::vector<QRect> gridCells(int width, int height, int columns, int rows, int skippedRows = 0);

/// The mean of each rectangle, all of which lie in the picture.
[[nodiscard]] std::vector<Colour> blockMeans(RowSource const& picture, std::vector<QRect> const& rects);

/// Means on a grid of cells.
struct LightGrid {
    int columns = 0;
    int rows = 0;
    std::vector<Colour> cells; ///< row by row

    [[nodiscard]] bool isEmpty() const { return cells.empty(); }
};

/// At most as many cells in each direction as there are pixels.
[[nodiscard]] LightGrid lightGrid(RowSource const& picture, int columns, int rows, int skippedRows = 0);
} // namespace pictara
