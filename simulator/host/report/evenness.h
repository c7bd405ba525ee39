#pragma once

#include "simulator/host/report/report.h"
#include "simulator/pictures/block_report.h"

#include <QImage>
#include <optional>

namespace pictara {
/// How even the picture is in one state of the sensor's correction.
struct Evenness {
    double uniformity = 0; ///< the dialog's own figure
    double limit = 0;      ///< for it, as the dialog shows it
    QString rating;        ///< the colour by which the dialog rates it: "green" up to the limit
    BlockReport blocks;
    QImage picture;

    [[nodiscard]] bool isBeyondLimit() const { return rating != QLatin1String("green"); }
};

/// In the order of kStates; nothing of a state that was not measured.
using EvennessStates = std::array<std::optional<Evenness>, 2>;

/// How many percent each block's luminance lies above that of the block in the centre.
[[nodiscard]] std::vector<double> luminanceResidual(BlockReport const& blocks);
/// How many percent each block's ratio of a channel (0 red, 2 blue) to green lies above the mean of all.
[[nodiscard]] std::vector<double> ratioResidual(BlockReport const& blocks, size_t channel);
/// The values on the way from the top left to the bottom right corner; both are among them.
[[nodiscard]] std::vector<double> diagonal(std::vector<double> const& values, int columns);

/// The figures of both states; where both were measured, also their pictures, maps and profiles.
[[nodiscard]] std::vector<Section> evennessSections(EvennessStates const& states);
} // namespace pictara
