#pragma once

#include "simulator/camera/optics.h"
#include "simulator/camera/register_map.h"

#include <array>
#include <optional>
#include <vector>

namespace simulator {
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
