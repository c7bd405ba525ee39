#pragma once

#include "tools/shading/picture_means.h"

namespace shading {
/// A lens and the lamp behind it, told apart.
struct LensAndLamp {
    Cells lens;
    Eigen::ArrayXd lamp; ///< in green, row by row as it lies before the straight camera; 1 in the middle
    double across = 0;   ///< rise of the lamp from the left to the right border, share of its middle
    double down = 0;     ///< the same from the top to the bottom
    double leftOver = 0; ///< root mean square of what neither lens nor such a lamp explains, of 1
};

/// Tells the lens from the lamp by the means of pictures that were taken with the camera straight and turned
/// by half a turn, on the same cells. The lamp is a quadratic of the place for each colour, and stands still:
/// of the camera's picture it is turned. The level may differ. None where the cells are of no such lamp.
[[nodiscard]] std::optional<LensAndLamp> separate(Cells const& straight, Cells const& turned, int columns);
} // namespace shading
