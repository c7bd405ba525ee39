#pragma once

#include <Eigen/Core>

namespace solver {
/// Powers 0..4 of each coordinate.
constexpr int kOrder = 5;
constexpr int kTerms = kOrder * kOrder;

/// Coefficients or basis functions of a polynomial in u and v; that of p, q stands at 5 p + q.
using Terms = Eigen::Matrix<double, kTerms, 1>;
using TermMatrix = Eigen::Matrix<double, kTerms, kTerms>;

/// The products T_p(u) T_q(v) of Chebyshev polynomials, in which least squares are well conditioned.
[[nodiscard]] Terms chebyshevTerms(double u, double v);

/// The products u^p v^q, in which a sensor holds its coefficients.
[[nodiscard]] Terms monomialTerms(double u, double v);

/// Turns Chebyshev coefficients into monomial ones.
[[nodiscard]] TermMatrix monomialsFromChebyshev();
} // namespace solver
