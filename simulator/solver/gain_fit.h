#pragma once

#include "simulator/solver/block_means.h"
#include "simulator/solver/tensor_polynomial.h"

#include <cstdint>
#include <vector>

namespace solver {
/// Coefficients of one bank as the registers hold them, binary16, c(p, q) at 5 p + q.
using PlaneCoefficients = std::array<uint16_t, kTerms>;
using BankCoefficients = PerPlane<PlaneCoefficients>;

/// What a correction shall reach.
struct Target {
    double cornerLuminance = 1; ///< luminance of the corners, 1 = the centre's
    double radius = 0;          ///< pixels from the array's centre that count; 0 = all

    /// Luminance of the corrected picture relative to the centre: 1 - (1 - cornerLuminance) r^2, r = 1 in the
    /// corners.
    [[nodiscard]] double luminance(double relativeRadius) const;
};

/// The image that is left after a correction, as far as block means tell.
[[nodiscard]] BlockMeans corrected(BlockMeans const& means, Geometry const& array,
                                   BankCoefficients const& correction);

/// Fits the gains that bring the image to the target: least squares of the corrected picture's relative error
/// with the weight on the blocks whose colour is worst. The centre keeps its colour, and the smallest gain of
/// all planes is 1. Blocks that are not trusted do not count.
[[nodiscard]] BankCoefficients fitGains(BlockMeans const& means, std::vector<bool> const& trusted,
                                        Geometry const& array, Target const& target);
} // namespace solver
