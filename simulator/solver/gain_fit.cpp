#include "simulator/solver/gain_fit.h"

#include "simulator/solver/binary16.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <limits>

namespace solver {

namespace {

constexpr int kUnknowns = static_cast<int>(kPlanes) * kTerms;
constexpr double kColourWeight = 8;    // of a squared difference between planes; luminance weighs 1
constexpr double kTraceWeight = 1e-6;  // of blocks beyond the radius: keeps the gain from running away there
constexpr double kRidge = 1e-9;        // of the normal matrix's mean diagonal
constexpr double kCentreRadius = 0.15; // relative radius of the blocks that tell the centre's colour
constexpr double kLuminanceShare = 0.25; // how visible an error of luminance is, beside one of colour
constexpr int kPasses = 4;               // of reweighting

using Normal = Eigen::Matrix<double, kUnknowns, kUnknowns>;
using Unknowns = Eigen::Matrix<double, kUnknowns, 1>;
/// Per block the terms of a plane times its normalised response: dot the coefficients gives the corrected
/// picture relative to the target, ideally 1.
using Design = PerPlane<Eigen::Matrix<double, Eigen::Dynamic, kTerms>>;

double horizontal(ComponentMeans const& plane, size_t block) {
    return plane.x[block % plane.x.size()];
}
double vertical(ComponentMeans const& plane, size_t block) {
    return plane.y[block / plane.x.size()];
}

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
    for (size_t k = 0; k < kPlanes; ++k) {
        ComponentMeans const& plane = means.planes[k];
        double const level = centreLevel(plane, trusted, array, target);
        design[k].resize(static_cast<Eigen::Index>(means.blocks()), kTerms);
        for (size_t block = 0; block < means.blocks(); ++block) {
            double const x = horizontal(plane, block);
            double const y = vertical(plane, block);
            double const response =
                plane.mean[block] / (level * target.luminance(array.relativeRadius(x, y)));
            design[k].row(static_cast<Eigen::Index>(block)) =
                response * chebyshevTerms(array.u(x), array.v(y));
        }
    }
    return design;
}

Eigen::ArrayXd blockWeights(BlockMeans const& means, std::vector<bool> const& trusted, Geometry const& array,
                            Target const& target) {
    Eigen::ArrayXd weights(static_cast<Eigen::Index>(means.blocks()));
    ComponentMeans const& green = means.planes[kGreenRed];
    for (size_t block = 0; block < means.blocks(); ++block) {
        bool const within = target.radius <= 0 ||
                            array.radius(horizontal(green, block), vertical(green, block)) <= target.radius;
        double const weight = within ? 1 : kTraceWeight;
        weights(static_cast<Eigen::Index>(block)) = trusted[block] ? weight : 0;
    }
    return weights;
}

/// Quadratic form of a block's four errors: their squares, and far more of the squared differences of red,
/// blue and each green from the mean green.
Eigen::Matrix4d errorForm() {
    Eigen::Vector4d green = Eigen::Vector4d::Zero();
    green(kGreenRed) = green(kGreenBlue) = 0.5;
    Eigen::Matrix4d form = Eigen::Matrix4d::Identity();
    for (size_t k = 0; k < kPlanes; ++k) {
        Eigen::Vector4d const difference = Eigen::Vector4d::Unit(static_cast<Eigen::Index>(k)) - green;
        form += kColourWeight * difference * difference.transpose();
    }
    return form;
}

Normal normalMatrix(Design const& design, Eigen::ArrayXd const& weights) {
    Eigen::Matrix4d const form = errorForm();
    Normal normal;
    for (int k = 0; k < 4; ++k) {
        Eigen::MatrixXd const weighted = weights.matrix().asDiagonal() * design[static_cast<size_t>(k)];
        for (int j = 0; j <= k; ++j) {
            TermMatrix const part = form(k, j) * weighted.transpose() * design[static_cast<size_t>(j)];
            normal.block<kTerms, kTerms>(k * kTerms, j * kTerms) = part;
            normal.block<kTerms, kTerms>(j * kTerms, k * kTerms) = part.transpose();
        }
    }
    normal.diagonal().array() += kRidge * normal.diagonal().mean();
    return normal;
}

/// The ideal is 1 in every plane, for which all differences vanish.
Unknowns rightSide(Design const& design, Eigen::ArrayXd const& weights) {
    Unknowns right;
    for (int k = 0; k < 4; ++k)
        right.segment<kTerms>(k * kTerms) = design[static_cast<size_t>(k)].transpose() * weights.matrix();
    return right;
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

Remainder remainder(Design const& design, Unknowns const& unknowns, BlockMeans const& means) {
    PerPlane<Eigen::ArrayXd> result;
    for (size_t k = 0; k < kPlanes; ++k)
        result[k] = design[k] * unknowns.segment<kTerms>(static_cast<Eigen::Index>(k) * kTerms);
    Eigen::ArrayXd const green = 0.5 * (result[kGreenRed] + result[kGreenBlue]);
    Remainder left{smoothed(green - 1, means.columns, means.rows).abs(), Eigen::ArrayXd::Zero(green.size())};
    for (Plane const plane : {kRed, kBlue}) {
        Eigen::ArrayXd const difference = result[plane] - green;
        Eigen::ArrayXd const smooth = smoothed(difference, means.columns, means.rows);
        left.colour = left.colour.max(smooth.abs());
        left.noise = std::max(left.noise, std::sqrt((difference - smooth).square().mean()));
    }
    return left;
}

struct Fit {
    Unknowns unknowns; ///< Chebyshev coefficients of the planes
    Normal normal;
};

/// Least squares, repeated with more weight where the result is worst (Lawson's method), because the worst
/// block is what is seen. Where the noise prevails the weights stay as they are.
Fit solve(Design const& design, Eigen::ArrayXd const& blocks, BlockMeans const& means) {
    Eigen::ArrayXd weights = blocks;
    Fit fit;
    for (int pass = 0; pass < kPasses; ++pass) {
        fit.normal = normalMatrix(design, weights);
        fit.unknowns = fit.normal.ldlt().solve(rightSide(design, weights));
        Remainder const left = remainder(design, fit.unknowns, means);
        Eigen::ArrayXd const visible = left.colour.max(kLuminanceShare * left.luminance) + left.noise + 1e-9;
        weights *= visible / visible.mean();
        weights *= blocks.sum() / weights.sum();
    }
    return fit;
}

/// Scales all planes alike so that the smallest gain is 1: a gain below 1 would leave highlights coloured.
void scaleToSmallestGain(Unknowns& unknowns) {
    constexpr int kSteps = 32;
    double smallest = std::numeric_limits<double>::infinity();
    for (int row = 0; row <= kSteps; ++row)
        for (int column = 0; column <= kSteps; ++column) {
            Terms const terms = chebyshevTerms(2.0 * column / kSteps - 1, 2.0 * row / kSteps - 1);
            for (int k = 0; k < 4; ++k)
                smallest = std::min(smallest, unknowns.segment<kTerms>(k * kTerms).dot(terms));
        }
    // A fit of a small radius may reach zero beyond it, which no factor mends.
    unknowns /= std::max(smallest, 0.25);
}

/// Rounds the coefficients one after another, the last first, and lets those that are still free make up for
/// each rounding (Babai's nearest plane): far better than rounding each by itself.
BankCoefficients quantise(Fit const& fit) {
    static TermMatrix const toMonomials = monomialsFromChebyshev();
    static TermMatrix const toChebyshev = toMonomials.inverse();
    BankCoefficients bank;
    for (int k = 0; k < 4; ++k) {
        Terms wanted = toMonomials * fit.unknowns.segment<kTerms>(k * kTerms);
        TermMatrix const normal =
            toChebyshev.transpose() * fit.normal.block<kTerms, kTerms>(k * kTerms, k * kTerms) * toChebyshev;
        TermMatrix const upper = normal.llt().matrixU();
        for (int i = kTerms - 1; i >= 0; --i) {
            auto& rounded = bank[static_cast<size_t>(k)][static_cast<size_t>(i)];
            rounded = toBinary16(wanted(i));
            double const change = fromBinary16(rounded) - wanted(i);
            // Keeps the rows above at their values, whose coefficients are rounded later.
            wanted.head(i) -=
                change * upper.topLeftCorner(i, i).triangularView<Eigen::Upper>().solve(upper.col(i).head(i));
        }
    }
    return bank;
}

} // namespace

double Target::luminance(double relativeRadius) const {
    return 1 - (1 - cornerLuminance) * relativeRadius * relativeRadius;
}

double gainAt(PlaneCoefficients const& coefficients, double u, double v) {
    Terms values;
    for (int i = 0; i < kTerms; ++i)
        values(i) = fromBinary16(coefficients[static_cast<size_t>(i)]);
    return values.dot(monomialTerms(u, v));
}

BlockMeans corrected(BlockMeans const& means, Geometry const& array, BankCoefficients const& correction) {
    BlockMeans result = means;
    for (size_t k = 0; k < kPlanes; ++k)
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
    Fit fit = solve(design, blockWeights(means, trusted, array, target), means);
    scaleToSmallestGain(fit.unknowns);
    return quantise(fit);
}

} // namespace solver
