#include "simulator/solver/specks.h"

#include <algorithm>
#include <cmath>

namespace solver {
namespace {
constexpr double kSpeckDepth = 0.03; // of the logarithm, at least
constexpr double kNoiseLimit = 6;    // times what half of the blocks stand out

double median(std::vector<double>& values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// One plane's blocks less the smooth brightness.
class Residue {
public:
    Residue(BlockMeans const& means, Plane plane, Eigen::VectorXd const& surface)
        : m_columns(means.columns), m_rows(means.rows), m_values(means.blocks()) {
        for (size_t block = 0; block < m_values.size(); ++block)
            m_values[block] =
                std::log(means.planes[plane].mean[block]) - surface(static_cast<Eigen::Index>(block));
    }

    /// By how much each block stands out from its neighbours.
    [[nodiscard]] std::vector<double> relief() const {
        std::vector<double> result;
        for (int row = 0; row < m_rows; ++row)
            for (int column = 0; column < m_columns; ++column)
                result.push_back(std::abs(relief(column, row)));
        return result;
    }

private:
    /// The median over opposite pairs of neighbours, so that slopes cancel. In the corners there is no pair.
    [[nodiscard]] double relief(int column, int row) const {
        constexpr int kDirections[][2] = {{1, 0}, {0, 1}, {1, 1}, {1, -1}, {2, 0}, {0, 2}, {2, 2}, {2, -2}};
        std::vector<double> differences;
        for (auto const& [x, y] : kDirections)
            if (inside(column + x, row + y) && inside(column - x, row - y))
                differences.push_back(at(column, row) -
                                      0.5 * (at(column + x, row + y) + at(column - x, row - y)));
        return differences.empty() ? 0 : median(differences);
    }

    [[nodiscard]] bool inside(int column, int row) const {
        return column >= 0 && row >= 0 && column < m_columns && row < m_rows;
    }
    [[nodiscard]] double at(int column, int row) const {
        return m_values[static_cast<size_t>(row * m_columns + column)];
    }

    int m_columns;
    int m_rows;
    std::vector<double> m_values;
};
} // namespace

std::vector<bool> blocksWithoutSpecks(BlockMeans const& means, Eigen::VectorXd const& surface) {
    std::vector<bool> trusted(means.blocks(), true);
    for (Plane const plane : {kGreenRed, kRed, kBlue, kGreenBlue}) {
        std::vector<double> const relief = Residue(means, plane, surface).relief();
        std::vector<double> ordered = relief;
        double const limit = std::max(kSpeckDepth, kNoiseLimit * median(ordered));
        for (size_t block = 0; block < relief.size(); ++block)
            if (relief[block] > limit)
                trusted[block] = false;
    }
    return trusted;
}
} // namespace solver
