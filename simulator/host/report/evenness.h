#pragma once

#include "simulator/host/report/report.h"
#include "simulator/pictures/block_report.h"

#include <QImage>
#include <optional>

namespace pictara {
/// How even the picture is in one state of the sensor's correction.
struct Evenness {
    double uniformity = 0; ///< the dialog's own figure
    double limit = 0;      ///< for it, as the dialog shows it; NaN when that is no number
    QString rating;        ///< the colour by which the dialog rates it: "green" up to the limit
    BlockReport blocks;
    BlockReport trueBlocks; ///< of the same picture without noise and quantisation
    QImage picture;
};

/// The dialog finds the figure beyond its limit.
[[nodiscard]] bool isBeyondLimit(Evenness const& evenness);

/// The figures of both states, what was not measured being missing; where both were, also their pictures,
/// maps and profiles.
[[nodiscard]] std::vector<Section> evennessSections(std::optional<Evenness> const& uncorrected,
                                                    std::optional<Evenness> const& corrected);
} // namespace pictara
