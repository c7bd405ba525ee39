#pragma once

#include <cmath>
#include <cstdint>

namespace simulator {
/// The value of an IEEE 754 binary16. Correction arithmetic has no infinities and no NaNs: it takes their
/// patterns for the largest finite value and for 0.
[[nodiscard]] inline double fromBinary16(uint32_t bits) {
    uint32_t const exponent = (bits >> 10) & 0x1F;
    uint32_t const fraction = bits & 0x3FF;
    double const sign = (bits & 0x8000) != 0 ? -1.0 : 1.0;
    constexpr double kLargest = 65504.0;
    if (exponent == 0x1F)
        return fraction == 0 ? sign * kLargest : 0.0;
    if (exponent == 0)
        return sign * std::ldexp(double(fraction), -24);
    return sign * std::ldexp(double(fraction | 0x400), int(exponent) - 25);
}
} // namespace simulator
