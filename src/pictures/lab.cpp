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
    double product = 1, k = 0;
    for (double& coefficient : m_coefficients) {
        product *= (exponent - k) / (k + 1);
        coefficient = product;
        ++k;
    }
    uint64_t number = kFirst;
    for (Node& node : m_nodes) {
        double const middle = nodeAt(number);
        node = {std::pow(middle, exponent), 1 / middle};
        ++number;
    }
}
} // namespace kestra
