#include "simulator/camera/noise.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace simulator {
namespace {
constexpr size_t kTableBits = 12;
constexpr size_t kTableSize = size_t(1) << kTableBits;
constexpr size_t kDrawsPerWord = 5; // draws of 12 bits out of 64

// The quantiles of the normal distribution in equal steps of probability, scaled to variance 1: a pixel's
// noise is then one look-up by 12 random bits.
std::array<float, kTableSize> quantiles() {
    std::array<double, kTableSize> exact{};
    double quantile = -4;
    double squares = 0;
    for (size_t i = 0; i < kTableSize; ++i) {
        double const probability = (double(i) + 0.5) / double(kTableSize);
        for (int step = 0; step < 20; ++step) { // Newton, starting from the neighbour
            double const missing = probability - 0.5 * std::erfc(-quantile / std::numbers::sqrt2);
            double const density = std::exp(-0.5 * quantile * quantile) / std::sqrt(2 * std::numbers::pi);
            quantile += missing / density;
        }
        exact[i] = quantile;
        squares += quantile * quantile;
    }
    double const scale = std::sqrt(double(kTableSize) / squares);
    std::array<float, kTableSize> table{};
    for (size_t i = 0; i < kTableSize; ++i)
        table[i] = float(exact[i] * scale);
    return table;
}
} // namespace

void fillGaussian(uint64_t stream, std::span<float> values) {
    static std::array<float, kTableSize> const table = quantiles();
    uint64_t counter = mixed(stream);
    size_t i = 0;
    while (i < values.size()) {
        uint64_t bits = mixed(counter++);
        for (size_t draw = 0; draw < kDrawsPerWord && i < values.size(); ++draw, bits >>= kTableBits)
            values[i++] = table[bits & (kTableSize - 1)];
    }
}
} // namespace simulator
