#pragma once

#include "simulator/solver/block_means.h"
#include "simulator/solver/tensor_polynomial.h"

#include <limits>

namespace solver {
/// Coefficients of one bank as the registers hold them, IEEE 754 binary16, c(p, q) at 5 p + q.
using PlaneCoefficients = Eigen::Matrix<Eigen::half, kTerms, 1>;
using BankCoefficients = PerPlane<PlaneCoefficients>;

/// What a correction shall reach.
struct Target {
    double cornerLuminance = 1; ///< of the corners, 1 = the centre's; it falls with the square of the radius
    double radius = std::numeric_limits<double>::infinity(); ///< up to which it counts; 1 in the corners
};

/// The image that is left after a correction, as far as block means tell.
[[nodiscard]] BlockMeans corrected(BlockMeans means, BankCoefficients const& correction);

/// Fits the gains that bring the image to the target: least squares of the corrected picture's relative error
/// with the weight on the blocks whose colour is worst. The centre keeps its colour, and the smallest gain of
/// all planes is 1. Blocks that are not trusted do not count.
[[nodiscard]] BankCoefficients fitGains(BlockMeans const& means, BlockMask const& trusted,
                                        Target const& target);
} // namespace solver
