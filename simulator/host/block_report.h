#pragma once

#include "simulator/host/colour_settings.h"

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

/// Measures the frame as the colour pipeline sees it before the tone curve, on 32 columns of blocks that are
/// about square. A frame that is not whole gives an empty report.
[[nodiscard]] BlockReport measureBlocks(simulator::Frame const& frame,
                                        simulator::CameraDescription const& camera,
                                        ColourSettings const& settings);

} // namespace pictara
