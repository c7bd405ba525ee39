#pragma once

#include "simulator/camera/profile.h"

#include <optional>
#include <vector>

namespace simulator {
/// One bank of correction registers: a polynomial gain for each plane around the bank's origin.
class GainPolynomial {
public:
    /// The layout names registers of the profile, which outlives this object.
    GainPolynomial(Profile& profile, SensorLayout::Bank const& bank);

    /// The gain of each photosite by the present registers; computed anew only when one of them has changed.
    [[nodiscard]] Field const& gains();

private:
    SensorArray m_array;
    std::vector<RegisterMap::Register const*> m_registers; ///< origin column and row, then plane by plane
    std::vector<uint32_t> m_values;                        ///< of the registers when the gains were computed
    Field m_gains;
};

/// The sensor's own shading correction. What it does follows from the registers and the light that the sensor
/// sees: the base's gain, times that of the tables for illuminants, mixed for the light. Its colour
/// temperature is estimated from the sensor's own exposures, never known, and a register shows it.
class ShadingCorrection {
public:
    /// The profile outlives this object.
    explicit ShadingCorrection(Profile& profile);

    /// The gain of each photosite by the present registers in the light that the sensor saw last; null while
    /// the correction is switched off. Valid until the next call.
    [[nodiscard]] Field const* gains();

    [[nodiscard]] bool dependsOnLight() const { return !m_tables.empty(); }
    /// Takes the ratio of red to blue of an exposure, which is looked up in what the sensor's filters make of
    /// black bodies. Where there is none, the sensor goes on with what it saw last.
    void look(std::optional<double> redToBlue);

private:
    [[nodiscard]] Field const& mixedTables();
    [[nodiscard]] IlluminantBlend blend() const;

    Profile const& m_profile;
    std::vector<double> m_logRatios; ///< ascending; of the temperatures in even steps of 1/K
    double m_kelvin;
    std::optional<GainPolynomial> m_base;
    std::vector<GainPolynomial> m_tables; ///< left to right
    Field m_mixed;
};
} // namespace simulator
