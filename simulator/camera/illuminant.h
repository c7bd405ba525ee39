#pragma once

#include "simulator/camera/register_map.h"

#include <array>
#include <optional>
#include <vector>

namespace simulator {
/// A colour filter with the pixel behind it: a bell curve over the wavelength.
struct ColourFilter {
    double peak = 0;        ///< nanometres
    double width = 0;       ///< standard deviation, nanometres
    double sensitivity = 0; ///< at the peak, relative to the other filters
};

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

/// The colour temperature that a sensor sees: the ratio of red to blue in its own exposures, looked up in
/// what its filters make of black bodies. A register shows it. What the lamp is set to is not known here.
class IlluminantEstimate {
public:
    /// The register outlives this object.
    IlluminantEstimate(std::array<ColourFilter, 3> const& filters, RegisterMap::Register& shown);

    /// Takes the ratio of an exposure. Where there is none, the sensor goes on with what it saw last.
    void update(std::optional<double> redToBlue);
    [[nodiscard]] double kelvin() const { return m_kelvin; }

private:
    std::vector<double> m_logRatios; ///< ascending; of the temperatures in even steps of 1/K
    RegisterMap::Register& m_shown;
    double m_kelvin;
};
} // namespace simulator
