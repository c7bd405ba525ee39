#include "tools/shading/turned.h"

#include <Eigen/Cholesky>
#include <cmath>

namespace shading {
namespace {
// Keeps the curvature at none where there is no gradient, which alone shows it; shares of 1, squared.
constexpr double kRidge = 3e-6;
constexpr int kPasses = 8;
constexpr double kDarkest = 0.1; // of the lamp's middle; no lamp that anybody measures by

// The lamp is 1 + slope (u, v) + curve (u^2, u v, v^2), u and v from -1 to 1.
struct Lamp {
    Eigen::Vector2d slope = Eigen::Vector2d::Zero();
    Eigen::Vector3d curve = Eigen::Vector3d::Zero();
};

// With A = lens (1 + odd + even) and B = lens (1 - odd + even), the ratio t = (A - B) / (A + B) is
// odd / (1 + even), so t = odd - t even, in which both are linear. On the right stands the t of the last
// pass' lamp and not the measured one, whose noise would look like curvature.
Lamp lampOf(Eigen::MatrixX2d const& places, Eigen::MatrixX3d const& squares, Eigen::VectorXd const& ratio) {
    Eigen::VectorXd modelled = Eigen::VectorXd::Zero(ratio.size());
    Lamp lamp;
    for (int pass = 0; pass < kPasses; ++pass) {
        Eigen::MatrixXd terms(places.rows(), 5);
        terms << places, -(modelled.asDiagonal() * squares);
        Eigen::MatrixXd normal = terms.transpose() * terms;
        normal.diagonal().tail<3>().array() += kRidge * double(ratio.size());
        Eigen::VectorXd const found = normal.ldlt().solve(terms.transpose() * ratio);
        lamp = {found.head<2>(), found.tail<3>()};
        modelled = (places * lamp.slope).array() / (1 + (squares * lamp.curve).array());
    }
    return lamp;
}
} // namespace

std::optional<LensAndLamp> separate(Cells const& straight, Cells const& turned, int columns) {
    Eigen::Index const count = straight.rows();
    double const rows = double(count) / columns;
    Eigen::MatrixX2d places(count, 2);
    for (Eigen::Index i = 0; i < count; ++i) {
        Eigen::Index const row = i / columns;
        places.row(i) << (2 * double(i % columns) + 1) / columns - 1, (2 * double(row) + 1) / rows - 1;
    }
    Eigen::MatrixX3d squares(count, 3);
    squares << places.col(0).cwiseAbs2(), places.rowwise().prod(), places.col(1).cwiseAbs2();
    LensAndLamp result{.lens = straight, .lamp = {}};
    for (int colour = 0; colour < 3; ++colour) {
        Eigen::ArrayXd const a = straight.col(colour);
        // The logarithm is odd but for the level.
        Eigen::ArrayXd const b = turned.col(colour) * std::exp((a / turned.col(colour)).log().mean());
        Eigen::ArrayXd const ratio = (a - b) / (a + b);
        Lamp const lamp = lampOf(places, squares, ratio);
        Eigen::ArrayXd const odd = places * lamp.slope, even = 1 + (squares * lamp.curve).array();
        // Also false for what is no number.
        if (!((even - odd.abs()).minCoeff() > kDarkest))
            return std::nullopt;
        result.lens.col(colour) = (a + b) / 2 / even;
        if (colour != 1)
            continue;
        result.lamp = even + odd;
        result.across = 2 * lamp.slope(0);
        result.down = 2 * lamp.slope(1);
        result.leftOver = std::sqrt((ratio - odd / even).square().mean());
    }
    return result;
}
} // namespace shading
