#pragma once

#include "simulator/host/report/summary_lines.h"

#include <span>

namespace pictara {
/// A figure of a picture, told by the page and to scripts.
struct Figure {
    char const* key; ///< for scripts, with the unit in it
    char const* label;
    double (*of)(Evenness const& evenness);
    int decimals; ///< on the page
};

/// All figures of a picture, in the order in which a reader wants them.
[[nodiscard]] std::span<Figure const> pictureFigures();

/// How many blocks deviate how far, in about so many bins of a round width that hold them all.
struct DeviationBins {
    double width = 1; ///< in a*, b*
    std::vector<int> counts;
};
[[nodiscard]] DeviationBins deviationBins(std::vector<double> const& deviations);

/// A quantity over the picture, of the delivered and of the ideal one.
struct PictureQuantity {
    char const* key;
    char const* title;
    std::vector<double> (*of)(LightMaps const& maps);
};

/// R/G, B/G and luminance as residuals in percent.
[[nodiscard]] std::span<PictureQuantity const> pictureQuantities();
} // namespace pictara
