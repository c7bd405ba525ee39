#pragma once

#include "simulator/camera/optics.h"

#include <array>
#include <vector>

namespace simulator {
/// What the sensor's filters make of a black body: red, green, blue relative to green.
[[nodiscard]] std::array<double, 3> illuminantResponse(std::array<ColourFilter, 3> const& filters,
                                                       double colourTemperature);

/// Where a colour temperature lies in a row of illuminants: linear in 1/K between two neighbours (that is how
/// sensors change along the Planckian locus), the nearest one outside.
struct IlluminantBlend {
    size_t lower = 0;
    size_t upper = 0;
    double share = 0; ///< of the upper one

    [[nodiscard]] double mix(double lowerValue, double upperValue) const {
        return lowerValue + share * (upperValue - lowerValue);
    }
};

/// `temperatures` ascend and are not empty.
[[nodiscard]] IlluminantBlend blendAt(std::vector<double> const& temperatures, double colourTemperature);
} // namespace simulator
