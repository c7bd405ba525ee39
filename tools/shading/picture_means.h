#pragma once

#include "simulator/camera/optics.h"
#include "simulator/pictures/block_report.h"
#include "simulator/solver/block_means.h"
#include "tools/shading/mosaic.h"

namespace shading {
/// Means of light on 32 columns of cells that are about square, row by row from the top left: red, green and
/// blue above the black level, 1 = white level.
using Cells = std::vector<pictara::Colour>;

/// A table tells the lens as it lies before the pixel array, however that is read out (bit 0 of
/// `orientation`: mirrored, bit 1: upside down).
[[nodiscard]] Cells asOnTheArray(Cells cells, int columns, uint32_t orientation);

/// What each colour needs to be as bright as in its brightest cell; none when a cell is not above black.
[[nodiscard]] std::optional<simulator::MeasuredShading::Illuminant> gainsOf(Cells const& cells,
                                                                            double kelvin);

/// What is kept of a picture, which itself is too large to keep many.
struct PictureMeans {
    QString file;
    uint32_t width = 0;                       ///< pixels
    uint32_t height = 0;                      ///< pixels
    simulator::PerPlane<double> blackLevel{}; ///< counts
    QString blackSource;
    solver::BlockMeans blocks; ///< as the picture shows them
    solver::Inspection inspection;
    double noise = 0; ///< standard deviation of a green sample in the middle, as a share of its level
    int columns = 0;  ///< of the cells
    int rows = 0;
    Cells cells; ///< as they lie on the array
};

[[nodiscard]] PictureMeans meansOf(Mosaic const& mosaic);

/// The pictures' means, in their order; empty with a message for the user when one cannot be read.
[[nodiscard]] std::optional<std::vector<PictureMeans>> readMeans(QStringList const& names,
                                                                 Coding const& coding, QString* error);

/// Where blocks of a picture lie, in its pixels, and how many there are; empty for none.
[[nodiscard]] QString placeText(PictureMeans const& picture, solver::BlockMask const& blocks);
} // namespace shading
