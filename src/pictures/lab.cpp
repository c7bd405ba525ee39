#include "pictures/lab.h"

namespace kestra {
namespace {
// A frame's statistics convert several hundred colours.
FractionalPower const kTransferPower(2.4);
FractionalPower const kCubeRoot(1.0 / 3);

double linearised(double value) {
    double const c = value / 255;
    return 100 * (c > 0.03928 ? kTransferPower((c + 0.055) / 1.055) : c / 12.92);
}

double f(double t) { return t > 0.008856 ? kCubeRoot(t) : 7.787 * t + 16.0 / 116; }
} // namespace

Lab rgbToLab(double red, double green, double blue) {
    double const r = linearised(red);
    double const g = linearised(green);
    double const b = linearised(blue);
    // The rounded white point is the one that the acceptance limits were set with.
    double const x = f((0.4124 * r + 0.3576 * g + 0.1805 * b) / 95.0);
    double const y = f((0.2126 * r + 0.7152 * g + 0.0722 * b) / 100.0);
    double const z = f((0.0193 * r + 0.1192 * g + 0.9505 * b) / 108.9);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

FractionalPower::FractionalPower(double exponent) : m_exponent(exponent) {
    double coefficient = 1;
    for (size_t k = 0; k < m_coefficients.size(); ++k) {
        coefficient *= (exponent - double(k)) / double(k + 1);
        m_coefficients[k] = coefficient;
    }
    for (size_t i = 0; i < m_nodes.size(); ++i) {
        double const node = nodeAt(kFirst + i);
        m_nodes[i] = {std::pow(node, exponent), 1 / node};
    }
}
} // namespace kestra
