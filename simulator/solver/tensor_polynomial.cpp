#include "simulator/solver/tensor_polynomial.h"

#include <array>

namespace solver {
namespace {
using Row = std::array<double, kOrder>;

Row chebyshev(double x) {
    Row row{1, x};
    for (size_t i = 2; i < row.size(); ++i)
        row[i] = 2 * x * row[i - 1] - row[i - 2];
    return row;
}

Row powers(double x) {
    Row row{1};
    for (size_t i = 1; i < row.size(); ++i)
        row[i] = x * row[i - 1];
    return row;
}

Terms product(Row const& inU, Row const& inV) {
    using Factor = Eigen::Map<Eigen::Matrix<double, kOrder, 1> const>;
    Eigen::Matrix<double, kOrder, kOrder> const products =
        Factor(inV.data()) * Factor(inU.data()).transpose();
    return products.reshaped();
}

/// Powers of x in T_0 to T_4, a column each.
constexpr double kPowersInChebyshev[kOrder][kOrder] = {
    {1, 0, -1, 0, 1}, //
    {0, 1, 0, -3, 0}, //
    {0, 0, 2, 0, -8}, //
    {0, 0, 0, 4, 0},  //
    {0, 0, 0, 0, 8},
};
} // namespace

Terms chebyshevTerms(double u, double v) { return product(chebyshev(u), chebyshev(v)); }
Terms monomialTerms(double u, double v) { return product(powers(u), powers(v)); }

TermMatrix monomialsFromChebyshev() {
    TermMatrix matrix;
    for (int row = 0; row < kTerms; ++row)
        for (int column = 0; column < kTerms; ++column)
            matrix(row, column) = kPowersInChebyshev[row / kOrder][column / kOrder] *
                                  kPowersInChebyshev[row % kOrder][column % kOrder];
    return matrix;
}
} // namespace solver
