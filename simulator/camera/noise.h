#pragma once

#include <cstdint>
#include <span>

namespace simulator {
/// Mixes a counter into 64 well-spread bits (SplitMix64, Steele, Lea and Flood 2014).
[[nodiscard]] constexpr uint64_t mixed(uint64_t counter) {
    uint64_t z = counter + 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

/// Fills normally distributed values of variance 1 that are a function of `stream` alone.
void fillGaussian(uint64_t stream, std::span<float> values);
} // namespace simulator
