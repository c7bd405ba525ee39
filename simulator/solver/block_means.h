#pragma once

#include "published/shadefit.h"
#include "simulator/solver/geometry.h"

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
    bool mirrored = false; ///< the delivered picture shows the array's right side on the left
    bool upsideDown = false;
    size_t bytesPerPixel = 1;
    bool twoByteSamples = false; ///< little-endian words
    std::vector<ComponentSampling> components;

    explicit FrameSampling(uint32_t orientation)
        : mirrored((orientation & 1) != 0), upsideDown((orientation & 2) != 0) {}
};

/// Bayer frames: the components are the planes in their own order, bit 0 of `bayerPhase` is the column and
/// bit 1 the row of the first red pixel of the delivered frame. RGB frames of 4 bytes a pixel, B G R x: the
/// components are red, green, blue.
[[nodiscard]] FrameSampling rawSampling(SensorLayout const& layout, uint32_t bayerPhase,
                                        uint32_t orientation);

/// YCbCr frames of 2 bytes a pixel in the order Y Cb Y Cr: the components are Y, Cb, Cr. Nothing for any
/// other order, which no sensor delivers.
[[nodiscard]] std::optional<FrameSampling> ycbcrSampling(sf_YcbcrInput const& input);

/// One component of a frame, block by block, row by row from the array's top left.
struct ComponentMeans {
    std::vector<double> x;       ///< mean position of the samples of each block column, pixels of the array
    std::vector<double> y;       ///< the same for each block row
    std::vector<double> mean;    ///< mean of each block's samples without outliers, counts
    std::vector<double> clipped; ///< share of each block's samples that lie at or above the white level
    double clippedShare = 0;     ///< the same of all samples
};

/// The four planes of a frame as the fit takes them: means above black level, 1 = white level. The array is
/// cut along even pixels, so that every block holds samples of every plane.
struct BlockMeans {
    int columns = 0;
    int rows = 0;
    PerPlane<ComponentMeans> planes;

    [[nodiscard]] size_t blocks() const { return size_t(columns) * size_t(rows); }
};

/// Bayer and RGB frames.
[[nodiscard]] BlockMeans readRaw(void const* frame, SensorLayout const& layout,
                                 FrameSampling const& sampling);

/// YCbCr frames, whose components are linear in light: converted by the equations of ITU-R BT.601 with the
/// record's luma range and chroma span.
[[nodiscard]] BlockMeans readYcbcr(void const* frame, SensorLayout const& layout, sf_YcbcrInput const& input,
                                   FrameSampling const& sampling);
} // namespace solver
