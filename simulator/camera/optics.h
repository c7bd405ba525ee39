#pragma once

#include "simulator/camera/json_place.h"
#include "simulator/camera/sensor_array.h"

#include <array>
#include <vector>

namespace simulator {
/// The light that a lens lets through, without colour.
struct Lens {
    double cornerAngle = 0;             ///< degrees between the axis and the ray to the corner
    std::array<double, 3> vignetting{}; ///< of 1 + a r^2 + b r^4 + c r^6, r = 1 in the corner
    std::array<double, 2> centre{};     ///< column and row in half-widths and half-heights off the middle
};

/// A colour filter with the pixel behind it: a bell curve over the wavelength.
struct ColourFilter {
    double peak = 0;        ///< nanometres
    double width = 0;       ///< standard deviation, nanometres
    double sensitivity = 0; ///< at the peak, relative to the other filters
};

/// Terms u, v, u^2, u v, v^2 of a plane's deviation from the lens, u and v from -1 to 1 over the array.
using ColourTerms = std::array<double, 5>;

/// Colour shading under one illuminant.
struct ColourShading {
    double temperature = 0; ///< kelvin
    std::array<ColourTerms, kPlaneCount> terms{};
};

/// Everything that lies between the scene and the photosites.
struct Optics {
    Lens lens;
    std::vector<ColourShading> shading;   ///< in ascending order of temperature
    std::array<ColourFilter, 3> filters;  ///< red, green, blue
    std::array<double, 9> colourMatrix{}; ///< sensor RGB to display RGB, row by row
};

[[nodiscard]] Optics readOptics(JsonPlace const& place);
} // namespace simulator
