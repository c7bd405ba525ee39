#include "simulator/host/session/colour_settings.h"

#include <algorithm>

namespace pictara {
ColourSettings colourSettings(StateVariables const& states) {
    auto const share = [&](char const* name, double unit, double low, double high) {
        return std::clamp(states.read(name) / unit, low, high);
    };
    ColourSettings settings;
    settings.redGain = share("Relative Red Gain", 1000, 0, 64);
    settings.blueGain = share("Relative Blue Gain", 1000, 0, 64);
    settings.colourCorrection = states.read("Color Correction") == 1;
    settings.saturation = share("Saturation", 10, 0, 10);
    settings.displayExponent = share("Gamma", 20, 0.05, 5);
    settings.contrast = share("Contrast", 20, 0, 10);
    settings.blackLift = share("Black Correct", 1000, 0, 0.5);
    return settings;
}
} // namespace pictara
