#pragma once

#include "published/shadefit.h"
#include "simulator/solver/layout.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace solver {
/// Where the samples of one component lie in a delivered frame: in every `rowStep`th row from `firstRow` on
/// the columns `firstColumn`, `firstColumn + columnStep` and so on, each `byteOffset` bytes into its pixel.
struct ComponentSampling {
    int firstColumn = 0;
    int columnStep = 1;
    int firstRow = 0;
    int rowStep = 1;
    size_t byteOffset = 0;
};

/// How the components of a frame are interleaved. Rows are tightly packed.
struct FrameSampling {
    std::vector<ComponentSampling> components;
    size_t bytesPerPixel = 1;
    bool twoByteSamples = false; ///< little-endian words
    bool mirrored = false;       ///< the delivered picture shows the array's right side on the left
    bool upsideDown = false;
};

/// Bayer frames: the components are the planes in their own order. Bit 0 of `bayerPhase` is the column and
/// bit 1 the row of the first red pixel of the delivered frame.
[[nodiscard]] FrameSampling bayerSampling(SensorLayout const& layout, uint32_t bayerPhase,
                                          uint32_t orientation);

/// RGB frames of 4 bytes a pixel, B G R x: the components are red, green, blue.
[[nodiscard]] FrameSampling rgb32Sampling(uint32_t orientation);

/// YCbCr frames of 2 bytes a pixel: the components are Y, Cb, Cr. Byte i of a pair of pixels holds the
/// component order[i] of the list Y, Cb, Y of the second pixel, Cr. Nothing when that is no order.
[[nodiscard]] std::optional<FrameSampling> ycbcrSampling(sf_YcbcrInput const& input);
} // namespace solver
