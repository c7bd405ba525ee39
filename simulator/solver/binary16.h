#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

/// IEEE 754 binary16, in which registers hold coefficients.
namespace solver {
inline constexpr int kFractionBits = 10;
inline constexpr int kSmallestExponent = -14; ///< of normal numbers; subnormal ones share its spacing

/// Rounds to the nearest, ties to even; beyond the largest finite value the largest finite value (a register
/// must not hold an infinity).
[[nodiscard]] inline uint16_t toBinary16(double value) {
    constexpr double kLargest = 65504;
    int const sign = std::signbit(value) ? 0x8000 : 0;
    double const magnitude = std::min(std::abs(value), kLargest);
    if (!(magnitude > 0))
        return uint16_t(sign);
    int const exponent = std::max(std::ilogb(magnitude), kSmallestExponent);
    // Significand with its leading bit, 1024..2047 for normal numbers. Adding instead of masking lets a carry
    // of the rounding run into the exponent, where it belongs.
    auto const significand = int(std::nearbyint(std::ldexp(magnitude, kFractionBits - exponent)));
    return uint16_t(sign | (((exponent - kSmallestExponent) << kFractionBits) + significand));
}

/// The value of a finite one.
[[nodiscard]] inline double fromBinary16(uint16_t bits) {
    int const field = (bits >> kFractionBits) & 0x1F;
    int const significand = (bits & 0x3FF) | (field == 0 ? 0 : 0x400);
    double const magnitude =
        std::ldexp(significand, std::max(field, 1) - 1 + kSmallestExponent - kFractionBits);
    return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}
} // namespace solver
