#include "simulator/solver/gain_fit.h"

#include "simulator/solver/binary16.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <limits>

namespace solver {
namespace {
constexpr double kTraceWeight = 1e-6;  // of blocks beyond the radius: keeps the gain from running away there
constexpr double kRidge = 1e-9;        // of the normal matrix's mean diagonal
constexpr double kCentreRadius = 0.15; // relative radius of the blocks that tell the centre's colour
constexpr double kLuminanceShare = 0.25; // how visible an error of luminance is, beside one of colour
constexpr int kPasses = 4;               // of reweighting

/// Per block the terms of a plane times its normalised response: dot the coefficients gives the corrected
/// picture relative to the target, ideally 1.
using Design = PerPlane<Eigen::Matrix<double, Eigen::Dynamic, kTerms>>;

double horizontal(ComponentMeans const& plane, size_t block) { return plane.x[block % plane.x.size()]; }
double vertical(ComponentMeans const& plane, size_t block) { return plane.y[block / plane.x.size()]; }

/// Mean response around the centre relative to the target: the level to which the plane is brought.
double centreLevel(ComponentMeans const& plane, std::vector<bool> const& trusted, Geometry const& array,
                   Target const& target) {
    double sum = 0;
    double count = 0;
    for (size_t block = 0; block < plane.mean.size(); ++block) {
        double const radius = array.relativeRadius(horizontal(plane, block), vertical(plane, block));
        if (!trusted[block] || radius > kCentreRadius)
            continue;
        sum += plane.mean[block] / target.luminance(radius);
        ++count;
    }
    return count > 0 ? sum / count : *std::max_element(plane.mean.begin(), plane.mean.end());
}

Design designOf(BlockMeans const& means, std::vector<bool> const& trusted, Geometry const& array,
                Target const& target) {
    Design design;
    for (size_t k = 0; k < kPlaneCount; ++k) {
        ComponentMeans const& plane = means.planes[k];
        double const level = centreLevel(plane, trusted, array, target);
        design[k].resize(Eigen::Index(means.blocks()), kTerms);
        for (size_t block = 0; block < means.blocks(); ++block) {
            double const x = horizontal(plane, block);
            double const y = vertical(plane, block);
            double const response =
                plane.mean[block] / (level * target.luminance(array.relativeRadius(x, y)));
            design[k].row(Eigen::Index(block)) = response * chebyshevTerms(array.u(x), array.v(y));
        }
    }
    return design;
}

Eigen::ArrayXd blockWeights(BlockMeans const& means, std::vector<bool> const& trusted, Geometry const& array,
                            Target const& target) {
    Eigen::ArrayXd weights(Eigen::Index(means.blocks()));
    ComponentMeans const& green = means.planes[Plane::GreenRed];
    for (size_t block = 0; block < means.blocks(); ++block) {
        bool const within = target.radius <= 0 ||
                            array.radius(horizontal(green, block), vertical(green, block)) <= target.radius;
        double const weight = within ? 1 : kTraceWeight;
        weights(Eigen::Index(block)) = trusted[block] ? weight : 0;
    }
    return weights;
}

/// Weighted least squares towards 1 in each plane by itself. What all planes leave alike, because no
/// polynomial follows the lens, shows as luminance only.
PerPlane<Terms> fitPlanes(Design const& design, Eigen::ArrayXd const& weights) {
    PerPlane<Terms> coefficients;
    for (size_t k = 0; k < kPlaneCount; ++k) {
        Eigen::MatrixXd const weighted = weights.matrix().asDiagonal() * design[k];
        TermMatrix normal = weighted.transpose() * design[k];
        normal.diagonal().array() += kRidge * normal.diagonal().mean();
        coefficients[k] = normal.ldlt().solve(weighted.colwise().sum().transpose());
    }
    return coefficients;
}

/// Mean over each block and its neighbours: what a lens leaves, without the noise.
Eigen::ArrayXd smoothed(Eigen::ArrayXd const& errors, int columns, int rows) {
    using Grid = Eigen::Array<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    Eigen::Map<Grid const> const grid(errors.data(), rows, columns);
    Grid result(rows, columns);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            int const top = std::max(row - 1, 0);
            int const left = std::max(column - 1, 0);
            int const bottom = std::min(row + 1, rows - 1);
            int const right = std::min(column + 1, columns - 1);
            result(row, column) = grid.block(top, left, bottom - top + 1, right - left + 1).mean();
        }
    return result.reshaped<Eigen::RowMajor>();
}

/// What a correction leaves, per block, and how much of that may be the image's noise.
struct Remainder {
    Eigen::ArrayXd luminance;
    Eigen::ArrayXd colour; ///< largest difference of a plane from green
    double noise = 0;      ///< of the difference of one block
};

Remainder remainder(Design const& design, PerPlane<Terms> const& coefficients, BlockMeans const& means) {
    PerPlane<Eigen::ArrayXd> result;
    for (size_t k = 0; k < kPlaneCount; ++k)
        result[k] = design[k] * coefficients[k];
    Eigen::ArrayXd const green = 0.5 * (result[Plane::GreenRed] + result[Plane::GreenBlue]);
    Remainder left{smoothed(green - 1, means.columns, means.rows).abs(), Eigen::ArrayXd::Zero(green.size())};
    for (Plane const plane : {Plane::Red, Plane::Blue}) {
        Eigen::ArrayXd const difference = result[plane] - green;
        Eigen::ArrayXd const smooth = smoothed(difference, means.columns, means.rows);
        left.colour = left.colour.max(smooth.abs());
        left.noise = std::max(left.noise, std::sqrt((difference - smooth).square().mean()));
    }
    return left;
}

/// Chebyshev coefficients of the planes: least squares, repeated with more weight where the result is worst
/// (Lawson's method), because the worst block is what is seen. The weights are common to the planes, so that
/// their errors stay alike, and stay as they are where the noise prevails.
PerPlane<Terms> solve(Design const& design, Eigen::ArrayXd const& blocks, BlockMeans const& means) {
    Eigen::ArrayXd const counting = (blocks == 1).cast<double>();
    Eigen::ArrayXd weights = blocks;
    PerPlane<Terms> coefficients = fitPlanes(design, weights);
    for (int pass = 1; pass < kPasses; ++pass) {
        Remainder const left = remainder(design, coefficients, means);
        Eigen::ArrayXd const visible = left.colour.max(kLuminanceShare * left.luminance) + left.noise + 1e-9;
        double const mean = (visible * counting).sum() / counting.sum();
        weights *= (counting > 0).select(visible / mean, 1.0);
        weights *= blocks.sum() / weights.sum();
        coefficients = fitPlanes(design, weights);
    }
    return coefficients;
}

/// The smallest gain over the array, of all planes.
double smallestGain(PerPlane<Terms> const& coefficients) {
    constexpr int kSteps = 32;
    double smallest = std::numeric_limits<double>::infinity();
    for (int row = 0; row <= kSteps; ++row)
        for (int column = 0; column <= kSteps; ++column) {
            Terms const terms = chebyshevTerms(2.0 * column / kSteps - 1, 2.0 * row / kSteps - 1);
            for (Terms const& plane : coefficients)
                smallest = std::min(smallest, plane.dot(terms));
        }
    return smallest;
}

/// With u and v within -1 to 1 the rounding of 25 moderate coefficients stays below 0.1 per cent of the gain.
BankCoefficients quantise(PerPlane<Terms> const& coefficients, double factor) {
    static TermMatrix const toMonomials = monomialsFromChebyshev();
    BankCoefficients bank;
    for (size_t k = 0; k < kPlaneCount; ++k) {
        Terms const monomials = factor * toMonomials * coefficients[k];
        std::transform(monomials.begin(), monomials.end(), bank[k].begin(), toBinary16);
    }
    return bank;
}

/// The gain that a bank gives at a position in u and v.
double gainAt(PlaneCoefficients const& coefficients, double u, double v) {
    Terms values;
    for (int i = 0; i < kTerms; ++i)
        values(i) = fromBinary16(coefficients[size_t(i)]);
    return values.dot(monomialTerms(u, v));
}
} // namespace

double Target::luminance(double relativeRadius) const {
    return 1 - (1 - cornerLuminance) * relativeRadius * relativeRadius;
}

BlockMeans corrected(BlockMeans const& means, Geometry const& array, BankCoefficients const& correction) {
    BlockMeans result = means;
    for (size_t k = 0; k < kPlaneCount; ++k)
        for (size_t block = 0; block < means.blocks(); ++block) {
            ComponentMeans& plane = result.planes[k];
            plane.mean[block] *=
                gainAt(correction[k], array.u(horizontal(plane, block)), array.v(vertical(plane, block)));
        }
    return result;
}

BankCoefficients fitGains(BlockMeans const& means, std::vector<bool> const& trusted, Geometry const& array,
                          Target const& target) {
    Design const design = designOf(means, trusted, array, target);
    PerPlane<Terms> const coefficients = solve(design, blockWeights(means, trusted, array, target), means);
    // All planes are scaled alike: a gain below 1 would leave highlights coloured. A fit of a small radius
    // may come near zero beyond it, which must not drive the centre into saturation.
    constexpr double kSmallestOfALens = 0.4;
    return quantise(coefficients, 1 / std::max(smallestGain(coefficients), kSmallestOfALens));
}
} // namespace solver
