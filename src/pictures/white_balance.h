#pragma once

#include "pictures/frame.h"

#include <optional>

namespace kestra {
/// Mean channel values, 0 to 255.
struct MeanColour {
    double red{};
    double green{};
    double blue{};
};

/// Mean over the centre of an RGB-32 frame, from a quarter to three quarters of both sides. Empty when the
/// frame has no pixels there to read.
[[nodiscard]] std::optional<MeanColour> meanOfCentre(Frame const& frame);

/// The relative gain, in thousandths, that leaves a quarter of the colour error: a damped loop that does not
/// overshoot on a noisy picture. `oldGain` is in thousandths, `channelMean` and `greenMean` must be above 0.
[[nodiscard]] int32_t correctedGain(int32_t oldGain, double channelMean, double greenMean);
} // namespace kestra
