#pragma once

#include "simulator/camera/optics.h"
#include "simulator/pictures/block_report.h"
#include "simulator/solver/block_means.h"
#include "tools/shading/mosaic.h"

namespace shading {
/// Means of light on cells that are about square, row by row from the top left: red, green and blue, 1 =
/// white level.
using Cells = Eigen::Array<double, Eigen::Dynamic, 3, Eigen::RowMajor>;

/// The means of a report as they lie before the pixel array, however that is read out (bit 0 of
/// `orientation`: mirrored, bit 1: upside down).
[[nodiscard]] Cells cellsOf(pictara::BlockReport const& blocks, uint32_t orientation);

/// What each colour needs to be as bright as in its brightest cell; none when a cell is not above black.
[[nodiscard]] std::optional<simulator::MeasuredShading::Illuminant> gainsOf(Cells const& cells,
                                                                            double kelvin);

/// What is kept of a picture.
struct PictureMeans {
    Mosaic of;                 ///< without the samples, which are too many to keep
    solver::BlockMeans blocks; ///< as the picture shows them
    solver::Inspection inspection;
    double noise = 0; ///< standard deviation of a green sample in the middle, as a share of its level
    int columns = 0;  ///< of the cells, 32
    int rows = 0;
    Cells cells; ///< as they lie on the array, above the black level
};

[[nodiscard]] PictureMeans meansOf(Mosaic mosaic);

/// A picture's means; empty with a message for the user when it cannot be read.
[[nodiscard]] std::optional<PictureMeans> readMeans(QString const& file, Coding const& coding,
                                                    QString* error);

/// Where blocks of a picture lie, in its pixels, and how many there are; empty for none.
[[nodiscard]] QString placeText(PictureMeans const& picture, solver::BlockMask const& blocks);
} // namespace shading
