#pragma once

#include "simulator/host/session/state_variables.h"

namespace pictara {
/// How the colour pipeline works, as plain numbers.
struct ColourSettings {
    double redGain = 1; ///< relative to green
    double blueGain = 1;
    bool colourCorrection = false; ///< whether the camera's colour matrix is applied
    double saturation = 1;
    double displayExponent = 1; ///< display value = light to this power
    double contrast = 1;        ///< slope of the display value about mid-grey
    double blackLift = 0;       ///< light that is shown as black, as a share of full scale

    bool operator==(ColourSettings const&) const = default;
};

/// The settings that the host's variables ask for: gains in thousandths, "Saturation" in tenths, "Gamma" and
/// "Contrast" in twentieths, "Black Correct" in thousandths of full scale.
[[nodiscard]] ColourSettings colourSettings(StateVariables const& states);
} // namespace pictara
