#include "simulator/solver/flatness.h"

#include "simulator/solver/tensor_polynomial.h"

#include <Eigen/Cholesky>
#include <algorithm>
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

/// The green brightness as a logarithm with a smooth surface laid through it.
class Surface {
public:
    Surface(BlockMeans const& means, Geometry const& array) {
        auto const blocks = Eigen::Index(means.blocks());
        m_basis.resize(blocks, kTerms);
        m_log.resize(blocks);
        ComponentMeans const& first = means.planes[Plane::GreenRed];
        ComponentMeans const& second = means.planes[Plane::GreenBlue];
        for (Eigen::Index i = 0; i < blocks; ++i) {
            auto const block = size_t(i);
            m_u.push_back(array.u(first.x[block % first.x.size()]));
            m_v.push_back(array.v(first.y[block / first.x.size()]));
            m_basis.row(i) = chebyshevTerms(m_u.back(), m_v.back());
            m_log(i) = std::log(0.5 * (first.mean[block] + second.mean[block]));
        }
        fit();
    }

    [[nodiscard]] Eigen::VectorXd const& residue() const { return m_residue; }
    [[nodiscard]] Eigen::VectorXd perBlock() const { return m_basis * m_coefficients; }
    [[nodiscard]] double at(double u, double v) const { return m_coefficients.dot(chebyshevTerms(u, v)); }
    [[nodiscard]] std::vector<double> const& u() const { return m_u; }
    [[nodiscard]] std::vector<double> const& v() const { return m_v; }

    /// What a lens may deviate from the surface, per block.
    [[nodiscard]] Eigen::ArrayXd tolerance() const {
        Eigen::Map<Eigen::ArrayXd const> const u(m_u.data(), m_log.size());
        Eigen::Map<Eigen::ArrayXd const> const v(m_v.data(), m_log.size());
        return kObjectDepth + kCornerDepth * (0.5 * (u.square() + v.square())).square();
    }

private:
    /// Least squares, repeated with less weight for what lies far off, so that an object cannot drag the
    /// surface along.
    void fit() {
        Eigen::ArrayXd weight = Eigen::ArrayXd::Ones(m_log.size());
        for (int pass = 0; pass < 5; ++pass) {
            Eigen::MatrixXd const weighted = weight.matrix().asDiagonal() * m_basis;
            TermMatrix const normal = m_basis.transpose() * weighted;
            m_coefficients = normal.ldlt().solve(weighted.transpose() * m_log);
            m_residue = m_log - m_basis * m_coefficients;
            weight = 1 / (1 + (m_residue.array() / kRobustWidth).square());
        }
    }

    std::vector<double> m_u;
    std::vector<double> m_v;
    Eigen::MatrixXd m_basis;
    Eigen::VectorXd m_log;
    Terms m_coefficients;
    Eigen::VectorXd m_residue;
};

double median(std::vector<double>& values) {
    auto const middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

using Grid = Eigen::Array<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// By how much a block stands out: the median over opposite pairs of neighbours, so that slopes cancel. In
/// the corners there is no pair.
double relief(Grid const& grid, Eigen::Index row, Eigen::Index column) {
    constexpr int kDirections[][2] = {{1, 0}, {0, 1}, {1, 1}, {1, -1}, {2, 0}, {0, 2}, {2, 2}, {2, -2}};
    auto const isInside = [&](Eigen::Index y, Eigen::Index x) {
        return x >= 0 && y >= 0 && x < grid.cols() && y < grid.rows();
    };
    std::vector<double> differences;
    for (auto const& [x, y] : kDirections)
        if (isInside(row + y, column + x) && isInside(row - y, column - x))
            differences.push_back(grid(row, column) -
                                  0.5 * (grid(row + y, column + x) + grid(row - y, column - x)));
    return differences.empty() ? 0 : std::abs(median(differences));
}

/// Per block whether all planes fit in with their neighbourhood: false where dust lies. `surface` is the
/// logarithm of the smooth brightness of each block, which is taken off first.
std::vector<bool> blocksWithoutSpecks(BlockMeans const& means, Eigen::VectorXd const& surface) {
    std::vector<bool> trusted(means.blocks(), true);
    for (ComponentMeans const& plane : means.planes) {
        Grid residue(means.rows, means.columns);
        for (size_t block = 0; block < trusted.size(); ++block)
            residue.data()[block] = std::log(plane.mean[block]) - surface(Eigen::Index(block));
        std::vector<double> reliefs;
        for (Eigen::Index row = 0; row < residue.rows(); ++row)
            for (Eigen::Index column = 0; column < residue.cols(); ++column)
                reliefs.push_back(relief(residue, row, column));
        std::vector<double> ordered = reliefs;
        double const limit = std::max(kSpeckDepth, kNoiseLimit * median(ordered));
        for (size_t block = 0; block < reliefs.size(); ++block)
            if (reliefs[block] > limit)
                trusted[block] = false;
    }
    return trusted;
}

QString percent(double share) { return QString::number(100 * share, 'f', 1) + QLatin1String(" %"); }

template <typename Test>
std::vector<bool> blocksOf(BlockMeans const& means, Test const& isRefused) {
    std::vector<bool> refused(means.blocks());
    for (size_t i = 0; i < refused.size(); ++i)
        refused[i] = std::any_of(means.planes.begin(), means.planes.end(),
                                 [&](ComponentMeans const& plane) { return isRefused(plane, i); });
    return refused;
}

bool isWellExposed(BlockMeans const& means, std::vector<bool>& refused, QString* error) {
    double brightest = 0;
    double darkest = 1;
    double clipped = 0;
    for (ComponentMeans const& plane : means.planes) {
        auto const [low, high] = std::minmax_element(plane.mean.begin(), plane.mean.end());
        brightest = std::max(brightest, *high);
        darkest = std::min(darkest, *low);
        clipped = std::max(clipped, plane.clippedShare);
    }
    if (clipped > kClippedShare) {
        *error = QStringLiteral("the image is clipped: %1 of a colour's samples are at the white level")
                     .arg(percent(clipped));
        refused = blocksOf(
            means, [](ComponentMeans const& plane, size_t i) { return plane.clipped[i] > kClippedShare; });
        return false;
    }
    if (brightest < kDarkestCentre || darkest < kDarkestBlock) {
        *error = QStringLiteral("the image is too dark: brightest block %1, darkest %2 of the range")
                     .arg(percent(brightest), percent(darkest));
        if (brightest >= kDarkestCentre)
            refused = blocksOf(
                means, [](ComponentMeans const& plane, size_t i) { return plane.mean[i] < kDarkestBlock; });
        return false;
    }
    return true;
}

bool holdsNoObject(Surface const& surface, std::vector<bool>& refused, QString* error) {
    Eigen::ArrayXd const deviation = surface.residue().array().abs();
    auto const beyond = (deviation > surface.tolerance()).eval();
    auto const blocks = double(beyond.count());
    if (blocks <= std::max(1.0, kObjectShare * double(deviation.size())))
        return true;
    *error = QStringLiteral("the image is not flat: %1 blocks deviate by up to %2 from a smooth field")
                 .arg(QString::number(blocks), percent(-std::expm1(-deviation.maxCoeff())));
    refused.assign(beyond.data(), beyond.data() + beyond.size());
    return false;
}

/// A lens that is offset by d shows L(r - d), about L(r) - d grad L(r): the odd part of the surface is the
/// offset times the gradient of its even part.
bool isEvenlyLit(Surface const& surface, Geometry const& array, QString* error) {
    double const aspect = double(array.width) / array.height;
    auto const even = [&](double u, double v) { return 0.5 * (surface.at(u, v) + surface.at(-u, -v)); };
    auto const blocks = Eigen::Index(surface.u().size());
    Eigen::MatrixX2d slopes(blocks, 2); // per half-width
    Eigen::VectorXd odd(blocks);
    for (Eigen::Index i = 0; i < blocks; ++i) {
        constexpr double kStep = 1e-3;
        double const u = surface.u()[size_t(i)];
        double const v = surface.v()[size_t(i)];
        slopes(i, 0) = (even(u + kStep, v) - even(u - kStep, v)) / (2 * kStep);
        slopes(i, 1) = (even(u, v + kStep) - even(u, v - kStep)) / (2 * kStep) * aspect;
        odd(i) = 0.5 * (surface.at(u, v) - surface.at(-u, -v));
    }
    Eigen::Vector2d const offset = -(slopes.transpose() * slopes).ldlt().solve(slopes.transpose() * odd);
    double const scale = std::sqrt(double(blocks));
    for (int axis = 0; axis < 2; ++axis) {
        double const slope = slopes.col(axis).norm() / scale;
        if (std::abs(offset(axis)) * slope > kLargestOffset * slope + kOffsetSlack) {
            *error =
                QStringLiteral("the lamp is not even: the brightness is centred %1 of the half-width off "
                               "the middle (column %2, row %3)")
                    .arg(offset.norm(), 0, 'f', 2)
                    .arg(offset(0), 0, 'f', 2)
                    .arg(offset(1), 0, 'f', 2);
            return false;
        }
    }
    double const rest = (odd + slopes * offset).norm() / scale;
    bool const isLopsided = rest > kLopsidedness;
    if (isLopsided)
        *error = QStringLiteral("the lamp is not even: %1 of the brightness are lopsided").arg(percent(rest));
    return !isLopsided;
}
} // namespace

bool inspect(BlockMeans const& means, Geometry const& array, Inspection& inspection, QString* error) {
    if (!isWellExposed(means, inspection.refused, error))
        return false;
    Surface const surface(means, array);
    inspection.trusted = blocksWithoutSpecks(means, surface.perBlock());
    return holdsNoObject(surface, inspection.refused, error) && isEvenlyLit(surface, array, error);
}
} // namespace solver
