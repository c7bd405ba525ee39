#pragma once

#include "simulator/host/session/row_source.h"

#include <QRect>

namespace pictara {
/// How even a picture is, from the means of its blocks in linear light. Errors are relative, as shares of 1.
struct BlockReport {
    double largestAgainstMedian = 0; ///< luminance, against the median block
    double meanAgainstMedian = 0;
    double largestAgainstCentre = 0; ///< luminance, against a block in the picture's centre
    double meanAgainstCentre = 0;
    double largestColourDeviation = 0; ///< distance in a*, b* from the mean of all blocks
    QRect worstBlock;                  ///< the block of the largest colour deviation
};

/// Measures rows of linear light, as the colour pipeline sees them before the tone curve, on 32 columns of
/// blocks that are about square. An empty picture gives an empty report.
[[nodiscard]] BlockReport measureBlocks(RowSource const& linear);
} // namespace pictara
