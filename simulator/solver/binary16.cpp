#include "simulator/solver/binary16.h"

#include <algorithm>
#include <cmath>

namespace solver {
namespace {
constexpr int kFractionBits = 10;
constexpr int kBias = 15;
constexpr int kSmallestExponent = 1 - kBias; // of normal numbers; subnormal ones share its spacing
constexpr double kLargest = 65504;
} // namespace

uint16_t toBinary16(double value) {
    uint16_t const sign = std::signbit(value) ? 0x8000 : 0;
    double const magnitude = std::min(std::abs(value), kLargest);
    if (!(magnitude > 0))
        return sign;
    int const exponent = std::max(std::ilogb(magnitude), kSmallestExponent);
    // Significand with its leading bit, 1024..2047 for normal numbers. Adding instead of masking lets a carry
    // of the rounding run into the exponent, where it belongs.
    auto const significand = int(std::nearbyint(std::ldexp(magnitude, kFractionBits - exponent)));
    int const bits = ((exponent - kSmallestExponent) << kFractionBits) + significand;
    return uint16_t(sign | bits);
}

double fromBinary16(uint16_t bits) {
    int const exponentField = (bits >> kFractionBits) & 0x1F;
    int const fraction = bits & 0x3FF;
    int const significand = exponentField == 0 ? fraction : fraction + 0x400;
    int const exponent = std::max(exponentField, 1) - kBias - kFractionBits;
    double const magnitude = std::ldexp(significand, exponent);
    return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}
} // namespace solver
