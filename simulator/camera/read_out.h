#pragma once

#include "simulator/camera/profile.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {
/// Mixes a counter into 64 well-spread bits (SplitMix64, Steele, Lea and Flood 2014).
[[nodiscard]] constexpr uint64_t mixed(uint64_t counter) {
    uint64_t z = counter + 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

/// One exposure.
struct Exposing {
    SensorArray const& array;
    ReadOut const& readOut;
    Field const& light;
    double countsPerLight = 0;    ///< counts above the pedestal for a light of 1, linear in time and lamp
    Field const* gains = nullptr; ///< null: the correction is off
    uint64_t noiseStream = 0;
};

/// Exposes, reads out and delivers, in a real sensor's order: photon noise (Poisson's normal approximation),
/// the amplifier's noise and the pedestal, the 12-bit converter's clipping and quantisation; only then the
/// correction multiplies what lies above the pedestal, noise and all, clips and quantises again. Raw frames
/// are little-endian 16-bit words or, rounded to the upper 8 bits, bytes; a system-on-chip delivers YCbCr
/// 4:2:2 (Y Cb Y Cr) by the ITU-R BT.601 matrix with a linear tone, no gains and no matrix of its own. The
/// rows at the top that the sensor does not expose hold whatever lies in its line buffers.
[[nodiscard]] Frame exposeFrame(Exposing const& exposing);

/// The ratio of red to blue above the pedestal in the middle of an exposure, before any correction: what the
/// white-balance statistics of a sensor see. Empty when saturation or darkness leaves nothing to compare.
[[nodiscard]] std::optional<double> centreRedToBlue(Exposing const& exposing);
} // namespace simulator
