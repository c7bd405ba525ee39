#pragma once

#include <Eigen/Core>
#include <unsupported/Eigen/KroneckerProduct>

namespace solver {
constexpr int kOrder = 5; ///< powers 0..4 of each coordinate
constexpr int kTerms = kOrder * kOrder;

/// Coefficients of a polynomial in u and v; that of p, q stands at 5 p + q.
using Terms = Eigen::Matrix<double, kTerms, 1>;
using TermMatrix = Eigen::Matrix<double, kTerms, kTerms>;
/// Values of the basis functions, a row for each position.
using Basis = Eigen::Matrix<double, Eigen::Dynamic, kTerms>;

/// The products u^p v^q, in which a sensor holds its coefficients.
[[nodiscard]] inline Basis monomials(Eigen::ArrayXd const& u, Eigen::ArrayXd const& v) {
    Basis basis = Basis::Ones(u.size(), kTerms);
    for (int term = 1; term < kTerms; ++term)
        basis.col(term) =
            term < kOrder ? basis.col(term - 1).array() * v : basis.col(term - kOrder).array() * u;
    return basis;
}

/// Turns Chebyshev coefficients into monomial ones.
[[nodiscard]] inline TermMatrix monomialsFromChebyshev() {
    // Powers of x in T_0 to T_4, a column each.
    Eigen::Matrix<double, kOrder, kOrder> const inOneCoordinate{
        {1, 0, -1, 0, 1}, {0, 1, 0, -3, 0}, {0, 0, 2, 0, -8}, {0, 0, 0, 4, 0}, {0, 0, 0, 0, 8}};
    return Eigen::kroneckerProduct(inOneCoordinate, inOneCoordinate);
}

/// The products T_p(u) T_q(v) of Chebyshev polynomials, in which least squares are well conditioned.
[[nodiscard]] inline Basis chebyshevs(Eigen::ArrayXd const& u, Eigen::ArrayXd const& v) {
    return monomials(u, v) * monomialsFromChebyshev();
}
} // namespace solver
