#pragma once

#include "simulator/host/report/block_means.h"

namespace pictara {
/// How far the colours of a picture's blocks, as a display shows them, lie apart.
struct DisplayBlocks {
    int columns = 0;
    int rows = 0;
    std::vector<double> deviations; ///< distance in a*, b* from the mean of all blocks, row by row
    double largest = 0;             ///< of the deviations: what the dialog calls the uniformity
    double mean = 0;
};

/// Rates display values of 0 to 255 by the definition of the dialog's figure: means of blocks, 20 x 15,
/// 24 x 16 or 32 x 18 of them by the picture's shape, read as sRGB and turned into CIE 1976 L*a*b*.
/// Rows at the top can be left out.
[[nodiscard]] DisplayBlocks rateDisplay(RowSource const& shown, int skippedRows = 0);
/// The same on a grid of that size.
[[nodiscard]] DisplayBlocks rateDisplay(RowSource const& shown, int columns, int rows, int skippedRows = 0);
} // namespace pictara
