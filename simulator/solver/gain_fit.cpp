#include "simulator/solver/gain_fit.h"

#include <Eigen/Cholesky>
#include <cmath>

namespace solver {
namespace {
constexpr double kTraceWeight = 1e-6;  // of blocks beyond the radius: keeps the gain from running away there
constexpr double kRidge = 1e-9;        // of the normal matrix's mean diagonal
constexpr double kCentreRadius = 0.15; // relative radius of the blocks that tell the centre's colour
constexpr double kLuminanceShare = 0.25; // how visible an error of luminance is, beside one of colour
constexpr int kPasses = 4;               // of reweighting

/// Per block the basis functions of a plane times its normalised response: times the coefficients they give
/// the corrected picture relative to the target, ideally 1.
using Design = PerPlane<Basis>;

Design designOf(BlockMeans const& means, BlockMask const& trusted, Target const& target) {
    Design design;
    for (size_t k = 0; k < kPlaneCount; ++k) {
        ComponentMeans const& plane = means.planes[k];
        Eigen::ArrayXd const relative =
            plane.mean / (1 - (1 - target.cornerLuminance) * plane.radius.square());
        // The mean response around the centre is the level to which the plane is brought.
        Eigen::ArrayXd const centre = (trusted && plane.radius <= kCentreRadius).cast<double>();
        double const blocks = centre.sum();
        double const level = blocks > 0 ? (centre * relative).sum() / blocks : plane.mean.maxCoeff();
        design[k] = (relative / level).matrix().asDiagonal() * chebyshevs(plane.u, plane.v);
    }
    return design;
}

/// Weighted least squares towards 1 in each plane by itself. What all planes leave alike, because no
/// polynomial follows the lens, shows as luminance only.
PerPlane<Terms> fitPlanes(Design const& design, Eigen::ArrayXd const& weights) {
    PerPlane<Terms> coefficients;
    for (size_t k = 0; k < kPlaneCount; ++k) {
        Basis const weighted = weights.matrix().asDiagonal() * design[k];
        TermMatrix normal = weighted.transpose() * design[k];
        normal.diagonal().array() += kRidge * normal.diagonal().mean();
        coefficients[k] = normal.ldlt().solve(weighted.colwise().sum().transpose());
    }
    return coefficients;
}

/// Mean over each block and its neighbours: what a lens leaves, without the noise.
Eigen::ArrayXd smoothed(Eigen::ArrayXd const& errors, int columns, int rows) {
    Eigen::ArrayXXd const grid = errors.reshaped(columns, rows);
    Eigen::ArrayXXd result(columns, rows);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            int const top = std::max(row - 1, 0);
            int const left = std::max(column - 1, 0);
            int const bottom = std::min(row + 1, rows - 1);
            int const right = std::min(column + 1, columns - 1);
            result(column, row) = grid.block(left, top, right - left + 1, bottom - top + 1).mean();
        }
    return result.reshaped();
}

/// How visible what a correction leaves is, per block. Where the noise prevails, it is the same everywhere.
Eigen::ArrayXd visibleError(Design const& design, PerPlane<Terms> const& coefficients,
                            BlockMeans const& means) {
    PerPlane<Eigen::ArrayXd> result;
    for (size_t k = 0; k < kPlaneCount; ++k)
        result[k] = design[k] * coefficients[k];
    Eigen::ArrayXd const green = 0.5 * (result[Plane::GreenRed] + result[Plane::GreenBlue]);
    Eigen::ArrayXd visible = kLuminanceShare * smoothed(green - 1, means.columns, means.rows).abs();
    double noise = 0; // of the difference of one block
    for (Plane const plane : {Plane::Red, Plane::Blue}) {
        Eigen::ArrayXd const difference = result[plane] - green;
        Eigen::ArrayXd const smooth = smoothed(difference, means.columns, means.rows);
        visible = visible.max(smooth.abs());
        noise = std::max(noise, std::sqrt((difference - smooth).square().mean()));
    }
    return visible + noise + 1e-9;
}

/// Chebyshev coefficients of the planes: least squares, repeated with more weight where the result is worst
/// (Lawson's method), because the worst block is what is seen. The weights are common to the planes, so that
/// their errors stay alike, and stay as they are where the noise prevails.
PerPlane<Terms> solve(Design const& design, Eigen::ArrayXd const& blocks, BlockMeans const& means) {
    Eigen::ArrayXd const counting = (blocks == 1).cast<double>();
    Eigen::ArrayXd weights = blocks;
    PerPlane<Terms> coefficients = fitPlanes(design, weights);
    for (int pass = 1; pass < kPasses; ++pass) {
        Eigen::ArrayXd const visible = visibleError(design, coefficients, means);
        double const mean = (visible * counting).sum() / counting.sum();
        weights *= (counting > 0).select(visible / mean, 1.0);
        weights *= blocks.sum() / weights.sum();
        coefficients = fitPlanes(design, weights);
    }
    return coefficients;
}

/// The smallest gain over the array, of all planes.
double smallestGain(PerPlane<Terms> const& coefficients) {
    constexpr int kPositions = 33; // along each side
    Eigen::ArrayXXd const u = Eigen::ArrayXd::LinSpaced(kPositions, -1, 1).replicate(1, kPositions);
    Basis const basis = chebyshevs(u.reshaped(), u.transpose().reshaped());
    double smallest = std::numeric_limits<double>::infinity();
    for (Terms const& plane : coefficients)
        smallest = std::min(smallest, (basis * plane).minCoeff());
    return smallest;
}

/// Rounds to the nearest, ties to even; beyond the largest finite value the largest finite value (a register
/// must not hold an infinity).
Eigen::half toRegister(double value) {
    constexpr double kLargest = 65504;
    constexpr int kFractionBits = 10;
    constexpr int kSmallestExponent = -14; // of normal numbers; subnormal ones share its spacing
    double const bounded = std::clamp(value, -kLargest, kLargest);
    int const exponent = std::max(std::ilogb(bounded), kSmallestExponent) - kFractionBits;
    // Rounded here, because Eigen rounds by way of a float, which may make a tie of what is none.
    return Eigen::half(float(std::ldexp(std::nearbyint(std::ldexp(bounded, -exponent)), exponent)));
}
} // namespace

BlockMeans corrected(BlockMeans means, BankCoefficients const& correction) {
    for (size_t k = 0; k < kPlaneCount; ++k) {
        ComponentMeans& plane = means.planes[k];
        plane.mean *= (monomials(plane.u, plane.v) * correction[k].cast<double>()).array();
    }
    return means;
}

BankCoefficients fitGains(BlockMeans const& means, BlockMask const& trusted, Target const& target) {
    auto const isWithin = (means.planes[Plane::GreenRed].radius <= target.radius).eval();
    Eigen::ArrayXd const weights = trusted.cast<double>() * isWithin.cast<double>().max(kTraceWeight);
    PerPlane<Terms> const coefficients = solve(designOf(means, trusted, target), weights, means);
    // All planes are scaled alike: a gain below 1 would leave highlights coloured. A fit of a small radius
    // may come near zero beyond it, which must not drive the centre into saturation.
    constexpr double kSmallestOfALens = 0.4;
    double const factor = 1 / std::max(smallestGain(coefficients), kSmallestOfALens);
    // With u and v within -1 to 1 the rounding of 25 moderate coefficients stays below 0.1 per cent of the
    // gain.
    TermMatrix const toRegisters = factor * monomialsFromChebyshev();
    BankCoefficients bank;
    for (size_t k = 0; k < kPlaneCount; ++k)
        bank[k] = (toRegisters * coefficients[k]).unaryExpr(&toRegister);
    return bank;
}
} // namespace solver
