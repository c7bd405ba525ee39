#pragma once

#include "simulator/host/report/block_report.h"
#include "simulator/host/report/display_blocks.h"

#include <QImage>

namespace pictara {
/// A picture's light as even maps show it.
struct LightMaps {
    LightGrid sensor;  ///< in the sensor's own colours, balanced by the relative gains
    LightGrid display; ///< in linear display RGB
};

/// All that a report tells of one picture, and what the picture would be without noise and quantisation.
struct PictureDetail {
    LightMaps maps;
    LightMaps trueMaps;
    LightGrid coarseLight;      ///< 11 x 11 cells of linear display RGB
    DisplayBlocks coarseColour; ///< on the same cells
    DisplayBlocks shown;        ///< on the dialog's blocks
    DisplayBlocks trueShown;    ///< the same of the ideal picture: the true figure
    BlockReport trueBlocks;
};

/// `shown` is the frame as displayed. Rows without a picture are left out.
[[nodiscard]] PictureDetail measureDetail(simulator::Frame const& frame, simulator::IdealFrame const& ideal,
                                          simulator::CameraDescription const& camera,
                                          ColourSettings const& settings, QImage const& shown);

/// How many percent each cell's luminance lies above that of the cell in the middle.
[[nodiscard]] std::vector<double> luminanceResidual(LightGrid const& light);
/// How many percent each cell's ratio of a channel (0 red, 2 blue) to green lies above the mean of all cells.
[[nodiscard]] std::vector<double> ratioResidual(LightGrid const& light, size_t channel);
/// The values on the way from the top left to the bottom right corner; both are among them.
[[nodiscard]] std::vector<double> diagonal(std::vector<double> const& values, int columns, int rows);
} // namespace pictara
