#pragma once

#include "simulator/camera/gain_polynomial.h"
#include "simulator/camera/table_blend.h"

#include <optional>
#include <vector>

namespace simulator {
/// The sensor's own shading correction. What it does follows from the registers and the light that the sensor
/// sees: the base's gain, times that of the tables for illuminants, mixed for the light.
class ShadingCorrection {
public:
    /// The profile names registers of the map; the map outlives this object.
    ShadingCorrection(Profile const& profile, RegisterMap& registers);

    /// Whether the switch register says "on" right now.
    [[nodiscard]] bool isOn() const;
    /// The gain of each photosite by the present registers in light of a colour temperature, which counts
    /// only where there are tables. Valid until the next call.
    [[nodiscard]] Field const& gains(double kelvin);

private:
    RegisterSwitch m_switch;
    RegisterMap::Register const* m_switchRegister;
    std::optional<GainPolynomial> m_base;
    std::vector<GainPolynomial> m_tables; ///< left to right
    std::optional<TableBlend> m_blend;    ///< where there are tables
    Field m_mixed;
};
} // namespace simulator
