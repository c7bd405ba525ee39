#pragma once

#include "simulator/host/report/certificate.h"
#include "simulator/pictures/block_report.h"

#include <optional>

namespace pictara {
/// How even the picture is in one state of the sensor's correction.
struct Evenness {
    double uniformity = 0; ///< the dialog's own figure
    double limit = 0;      ///< for it, as the dialog shows it
    QString rating;        ///< the colour by which the dialog rates it: "green" up to the limit
    BlockReport blocks;
    QImage picture;
};

/// What the dialog's colour says.
[[nodiscard]] Verdict verdictOf(QString const& rating);

/// Without the sensor's correction and with it; nothing of a state that was not measured.
struct EvennessStates {
    std::optional<Evenness> before, after;

    /// Both were measured, on pictures that hold blocks.
    [[nodiscard]] bool areWhole() const {
        return before && after && !before->blocks.means.empty() && !after->blocks.means.empty();
    }
};

/// The luminance that a calibration was asked for.
struct LuminanceTarget {
    std::optional<double> falloff; ///< the corners' luminance, 1 = the centre's; none: not known, not judged
    double limit = 0;              ///< percent off the target
};

/// Tells how far the dialog's figure of one frame goes with its noise: of frames that differ in nothing else.
void tellRepeatability(std::vector<double> const& figures, Certificate& certificate);

/// Tells what was measured and judges it; where both states were measured, with pictures, maps and profiles.
void tellEvenness(EvennessStates const& states, LuminanceTarget const& target, Certificate& certificate);
} // namespace pictara
