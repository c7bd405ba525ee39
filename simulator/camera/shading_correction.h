#pragma once

#include "simulator/camera/illuminant.h"
#include "simulator/camera/profile.h"
#include "simulator/camera/register_map.h"

#include <optional>
#include <vector>

namespace simulator {
/// One bank of correction registers: a polynomial gain for each plane around the bank's origin.
class GainPolynomial {
public:
    /// The layout names registers of the map, which outlives this object.
    GainPolynomial(SensorArray const& array, SensorLayout const& layout, SensorLayout::Bank const& bank,
                   RegisterMap& registers);

    /// The gain of each photosite by the present registers; computed anew only when one of them has changed.
    [[nodiscard]] Field const& gains();

private:
    void computeGains();

    SensorArray m_array;
    std::vector<RegisterMap::Register const*> m_registers; ///< origin column and row, then plane by plane
    std::vector<uint32_t> m_values;                        ///< of the registers when the gains were computed
    Field m_gains;
};

/// The sensor's own shading correction. What it does follows from the registers and the light that the sensor
/// sees: the base's gain, times that of the tables for illuminants, mixed for the light.
class ShadingCorrection {
public:
    /// The profile names registers of the map. Both outlive this object.
    ShadingCorrection(Profile const& profile, RegisterMap& registers);

    /// Whether the switch register says "on" right now.
    [[nodiscard]] bool isOn() const { return isOn(m_profile.correctionSwitch); }
    /// The gain of each photosite by the present registers in light of a colour temperature, which counts
    /// only where there are tables. Valid until the next call.
    [[nodiscard]] Field const& gains(double kelvin);

private:
    [[nodiscard]] uint32_t valueOf(QByteArray const& reg) const;
    [[nodiscard]] bool isOn(RegisterSwitch const& told) const;
    [[nodiscard]] std::optional<size_t> heldTable() const;
    [[nodiscard]] IlluminantBlend blendOf(double kelvin) const;

    Profile const& m_profile;
    RegisterMap& m_map;
    std::optional<GainPolynomial> m_base;
    std::vector<GainPolynomial> m_tables; ///< left to right
    Field m_mixed;
};
} // namespace simulator
