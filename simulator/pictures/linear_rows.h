#pragma once

#include "simulator/camera/simulated_camera.h"

#include <functional>
#include <vector>

namespace pictara {
/// How a host shows light, as plain numbers.
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

/// The weights of red, green and blue in the luminance of linear sRGB (IEC 61966-2-1).
inline constexpr double kLuminance[3] = {0.2126, 0.7152, 0.0722};

/// One row of linear light, 0 at the black level and 1 at full scale.
struct ColourRow {
    std::vector<float> red, green, blue;
};

/// Reads a frame as linear light in display RGB, row by row from the top: black level taken off, colours
/// completed (a missing one is the mean of its nearest samples), relative gains, colour matrix and saturation
/// applied. False, and nothing is read, for a frame whose buffer does not hold the rows that it tells of, or
/// of less than 2 x 2 pixels.
bool readLinear(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                ColourSettings const& settings,
                std::function<void(uint32_t y, ColourRow const& row)> const& use);
} // namespace pictara
