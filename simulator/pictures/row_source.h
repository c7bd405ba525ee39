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

/// One row of linear light, 0 at the black level and 1 at full scale.
struct ColourRow {
    std::vector<float> red, green, blue;
};

/// A picture that can be read row by row from the top down, as often as one likes. What it was made of
/// outlives it.
struct RowSource {
    using Use = std::function<void(uint32_t y, ColourRow const& row)>;

    int width = 0;
    int height = 0;
    std::function<void(Use const&)> read = [](Use const&) {};
};

/// A frame as linear light in display RGB: black level taken off, colours completed (a missing one is the
/// mean of its nearest samples), relative gains, colour matrix and saturation applied. Empty for a frame
/// whose buffer does not hold the rows that it tells of, or of less than 2 x 2 pixels.
[[nodiscard]] RowSource linearRows(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                                   ColourSettings const& settings);
[[nodiscard]] RowSource linearRows(simulator::IdealFrame const& frame,
                                   simulator::CameraDescription const& camera,
                                   ColourSettings const& settings);
} // namespace pictara
