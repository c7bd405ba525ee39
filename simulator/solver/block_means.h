#pragma once

#include "published/shadefit.h"
#include "simulator/solver/layout.h"
#include "simulator/solver/planes.h"
#include "simulator/solver/sampling.h"

#include <vector>

namespace solver {
/// The blocks into which the array is cut. Edges are even pixels of the array (the last one may be odd), so
/// that every block holds samples of every plane.
struct BlockGrid {
    std::vector<int> columnEdges; ///< pixels from the array's left, ascending, columns() + 1 of them
    std::vector<int> rowEdges;    ///< pixels from the array's top

    explicit BlockGrid(Geometry const& array);
    [[nodiscard]] int columns() const { return static_cast<int>(columnEdges.size()) - 1; }
    [[nodiscard]] int rows() const { return static_cast<int>(rowEdges.size()) - 1; }
    [[nodiscard]] size_t blocks() const {
        return static_cast<size_t>(columns()) * static_cast<size_t>(rows());
    }
};

/// One component of a frame, block by block, row by row from the array's top left.
struct ComponentMeans {
    std::vector<double> x;       ///< mean position of the samples of each block column, pixels of the array
    std::vector<double> y;       ///< the same for each block row
    std::vector<double> mean;    ///< mean of each block's samples without outliers, counts
    std::vector<double> clipped; ///< share of each block's samples that lie at or above the white level
    double clippedShare = 0;     ///< the same of all samples
};

/// The four planes of a frame as the fit takes them: means above black level, 1 = white level.
struct BlockMeans {
    int columns = 0;
    int rows = 0;
    PerPlane<ComponentMeans> planes;

    [[nodiscard]] size_t blocks() const { return static_cast<size_t>(columns) * static_cast<size_t>(rows); }
};

/// Bayer and RGB frames.
[[nodiscard]] BlockMeans readRaw(void const* frame, SensorLayout const& layout,
                                 FrameSampling const& sampling);

/// YCbCr frames, whose components are linear in light: converted by the equations of ITU-R BT.601 with the
/// record's luma range and chroma span.
[[nodiscard]] BlockMeans readYcbcr(void const* frame, SensorLayout const& layout, sf_YcbcrInput const& input,
                                   FrameSampling const& sampling);
} // namespace solver
