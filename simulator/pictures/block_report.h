#pragma once

#include "simulator/pictures/linear_rows.h"

#include <QRect>
#include <array>
#include <vector>

namespace pictara {
/// Red, green, blue.
using Colour = std::array<double, 3>;

/// In linear sRGB.
[[nodiscard]] double luminance(Colour const& colour);
/// The axes a* and b* of CIE 1976 L*a*b* (CIE 15), of linear sRGB (IEC 61966-2-1) against its white, D65.
[[nodiscard]] std::array<double, 2> colourAxes(Colour const& colour);

/// How even a picture is, from the means of its blocks in linear light. Errors are relative, as shares of 1.
struct BlockReport {
    int columns = 0;
    int rows = 0;
    std::vector<Colour> means;         ///< of the blocks, row by row
    double centreLuminance = 0;        ///< of a block in the picture's centre
    double largestAgainstMedian = 0;   ///< luminance, against the median block
    double meanAgainstMedian = 0;      ///< the same, over all blocks
    double largestAgainstCentre = 0;   ///< luminance, against the block in the centre
    std::vector<double> deviations;    ///< distance in a*, b* from the mean of all blocks, of each block
    double largestColourDeviation = 0; ///< of these
    QRect worstBlock;                  ///< the block of the largest colour deviation
    int skippedRows = 0;               ///< of the picture, above the blocks
};

/// Measures a frame in linear light, as the colour pipeline sees it before the tone curve, on 32 columns of
/// blocks that are about square, without the rows that hold no picture and the one below, into which they
/// were mixed when its colours were completed. A frame that is not whole, or of which nothing is left, gives
/// an empty report.
[[nodiscard]] BlockReport measureBlocks(simulator::Frame const& frame,
                                        simulator::CameraDescription const& camera,
                                        ColourSettings const& settings);
} // namespace pictara
