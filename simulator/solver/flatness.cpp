#include "simulator/solver/block_means.h"
#include "simulator/solver/tensor_polynomial.h"

#include <Eigen/Cholesky>
#include <cmath>

namespace solver {
namespace {
// Shares of the range from black to white level.
constexpr double kDarkestCentre = 0.06;
constexpr double kDarkestBlock = 0.003;

constexpr double kClippedShare = 0.005; // of a plane's samples; hot pixels stay far below

// Deviations of the logarithm of the brightness from a smooth surface.
constexpr double kObjectDepth = 0.10;  // in the middle; measured lenses stay below 0.03 there
constexpr double kCornerDepth = 0.20;  // more in the corners, where some lenses fall off sharply
constexpr double kObjectShare = 0.004; // of the blocks
constexpr double kRobustWidth = 0.02;  // deviations beyond weigh less in the surface

// Lamps that are brighter at one side.
constexpr double kLargestOffset = 0.115; // of the half-width
constexpr double kOffsetSlack = 0.012;   // of the logarithm, for lenses so flat that an offset means nothing
constexpr double kLopsidedness = 0.04;   // root mean square of the odd part that no offset explains

// Specks of dust: blocks that stand out from their neighbours.
constexpr double kSpeckDepth = 0.03; // of the logarithm, at least
constexpr double kNoiseLimit = 6;    // times what half of the blocks stand out

QString percent(double share) { return QString::number(100 * share, 'f', 1) + QLatin1String(" %"); }

QString exposureFault(BlockMeans const& means, Flaw& flaw, BlockMask& refused) {
    double brightest = 0;
    double darkest = 1;
    double clipped = 0;
    BlockMask isClipped = BlockMask::Zero(Eigen::Index{means.columns} * means.rows);
    BlockMask isDark = isClipped;
    for (ComponentMeans const& plane : means.planes) {
        brightest = std::max(brightest, plane.mean.maxCoeff());
        darkest = std::min(darkest, plane.mean.minCoeff());
        clipped = std::max(clipped, plane.clippedShare);
        isClipped = isClipped || plane.clipped > kClippedShare;
        isDark = isDark || plane.mean < kDarkestBlock;
    }
    if (clipped > kClippedShare) {
        flaw = Flaw::Clipped;
        refused = isClipped;
        return QStringLiteral("the image is clipped: %1 of a colour's samples are at the white level")
            .arg(percent(clipped));
    }
    if (brightest >= kDarkestCentre && darkest >= kDarkestBlock)
        return {};
    flaw = Flaw::TooDark;
    if (brightest >= kDarkestCentre)
        refused = isDark;
    return QStringLiteral("the image is too dark: brightest block %1, darkest %2 of the range")
        .arg(percent(brightest), percent(darkest));
}

/// The smooth surface through values per block: least squares, repeated with less weight for what lies far
/// off, so that an object cannot drag the surface along.
Terms smoothSurface(Basis const& basis, Eigen::VectorXd const& values) {
    Terms surface;
    Eigen::ArrayXd weight = Eigen::ArrayXd::Ones(values.size());
    for (int pass = 0; pass < 5; ++pass) {
        Basis const weighted = weight.matrix().asDiagonal() * basis;
        TermMatrix const normal = basis.transpose() * weighted;
        surface = normal.ldlt().solve(weighted.transpose() * values);
        weight = 1 / (1 + ((values - basis * surface).array() / kRobustWidth).square());
    }
    return surface;
}

/// By how much a block stands out: the median over opposite pairs of neighbours, so that slopes cancel. In
/// the corners there is no pair.
double relief(Eigen::ArrayXXd const& grid, Eigen::Index column, Eigen::Index row) {
    constexpr int kDirections[][2] = {{1, 0}, {0, 1}, {1, 1}, {1, -1}, {2, 0}, {0, 2}, {2, 2}, {2, -2}};
    auto const isInside = [&](Eigen::Index x, Eigen::Index y) {
        return x >= 0 && y >= 0 && x < grid.rows() && y < grid.cols();
    };
    std::vector<double> differences;
    for (auto const& [x, y] : kDirections)
        if (isInside(column + x, row + y) && isInside(column - x, row - y))
            differences.push_back(grid(column, row) -
                                  0.5 * (grid(column + x, row + y) + grid(column - x, row - y)));
    return differences.empty() ? 0 : std::abs(median(differences));
}

/// Whether all planes of a block fit in with their neighbourhood: false where dust lies. `smooth` is the
/// logarithm of the smooth brightness, which is taken off first.
BlockMask blocksWithoutSpecks(BlockMeans const& means, Eigen::ArrayXd const& smooth) {
    BlockMask trusted = BlockMask::Ones(smooth.size());
    for (ComponentMeans const& plane : means.planes) {
        Eigen::ArrayXXd const residue = (plane.mean.log() - smooth).reshaped(means.columns, means.rows);
        Eigen::ArrayXd const reliefs =
            Eigen::ArrayXXd::NullaryExpr(
                means.columns, means.rows,
                [&](Eigen::Index column, Eigen::Index row) { return relief(residue, column, row); })
                .reshaped();
        std::vector<double> ordered(reliefs.begin(), reliefs.end());
        trusted = trusted && reliefs <= std::max(kSpeckDepth, kNoiseLimit * median(ordered));
    }
    return trusted;
}

QString objectFault(ComponentMeans const& green, Eigen::ArrayXd const& deviation, BlockMask& refused) {
    BlockMask const beyond =
        deviation > kObjectDepth + kCornerDepth * (0.5 * (green.u.square() + green.v.square())).square();
    auto const blocks = double(beyond.count());
    if (blocks <= std::max(1.0, kObjectShare * double(deviation.size())))
        return {};
    refused = beyond;
    return QStringLiteral("the image is not flat: %1 blocks deviate by up to %2 from a smooth field")
        .arg(QString::number(blocks), percent(-std::expm1(-deviation.maxCoeff())));
}

/// A lens that is offset by d shows L(r - d), about L(r) - d grad L(r): the odd part of the surface is the
/// offset times the gradient of its even part.
QString lampFault(ComponentMeans const& green, Terms const& surface, double aspect) {
    constexpr double kStep = 1e-3;
    Terms even = surface; // term 5 p + q is odd where p + q is
    even(Eigen::seq(1, Eigen::last, 2)).setZero();
    Eigen::VectorXd const odd = chebyshevs(green.u, green.v) * (surface - even);
    Eigen::MatrixX2d slopes(odd.size(), 2); // per half-width
    slopes.col(0) = (chebyshevs(green.u + kStep, green.v) - chebyshevs(green.u - kStep, green.v)) * even;
    slopes.col(1) =
        (chebyshevs(green.u, green.v + kStep) - chebyshevs(green.u, green.v - kStep)) * even * aspect;
    slopes /= 2 * kStep;
    Eigen::Vector2d const offset = -(slopes.transpose() * slopes).ldlt().solve(slopes.transpose() * odd);
    double const scale = std::sqrt(double(odd.size()));
    Eigen::Array2d const slope = slopes.colwise().norm() / scale;
    if ((offset.array().abs() * slope > kLargestOffset * slope + kOffsetSlack).any())
        return QString::asprintf("the lamp is not even: the brightness is centred %.2f of the half-width off "
                                 "the middle (column %.2f, row %.2f)",
                                 offset.norm(), offset(0), offset(1));
    double const rest = (odd + slopes * offset).norm() / scale;
    if (rest > kLopsidedness)
        return QStringLiteral("the lamp is not even: %1 of the brightness are lopsided").arg(percent(rest));
    return {};
}
} // namespace

Inspection inspect(BlockMeans const& means, SensorLayout const& layout) {
    Inspection inspection;
    inspection.fault = exposureFault(means, inspection.flaw, inspection.refused);
    if (inspection.flaw != Flaw::None)
        return inspection;
    ComponentMeans const& green = means.planes[Plane::GreenRed];
    Basis const basis = chebyshevs(green.u, green.v);
    Eigen::ArrayXd const brightness = (0.5 * (green.mean + means.planes[Plane::GreenBlue].mean)).log();
    Terms const surface = smoothSurface(basis, brightness);
    Eigen::ArrayXd const smooth = basis * surface;
    inspection.trusted = blocksWithoutSpecks(means, smooth);
    inspection.fault = objectFault(green, (brightness - smooth).abs(), inspection.refused);
    inspection.flaw = inspection.fault.isEmpty() ? Flaw::None : Flaw::Object;
    if (inspection.flaw != Flaw::None)
        return inspection;
    inspection.fault = lampFault(green, surface, double(layout.width) / layout.height);
    inspection.flaw = inspection.fault.isEmpty() ? Flaw::None : Flaw::UnevenLamp;
    return inspection;
}
} // namespace solver
