#pragma once

#include "simulator/camera/light_field.h"
#include "simulator/camera/profile.h"
#include "simulator/camera/register_map.h"

#include <array>
#include <vector>

namespace simulator {

/// The sensor's own shading correction. What it does follows from the registers alone: a polynomial gain for
/// each plane around the correction's origin.
class ShadingCorrection {
public:
    /// The profile's layout and switch name registers of the map; the map outlives this object.
    ShadingCorrection(Profile const& profile, RegisterMap& registers);

    /// Whether the switch register says "on" right now.
    [[nodiscard]] bool isOn() const;
    /// The gain of each photosite by the present registers; computed anew only when one of them has changed.
    [[nodiscard]] Field const& gains();

private:
    using Coefficients = std::array<double, kCoefficientCount>;

    [[nodiscard]] std::vector<uint32_t> registerValues() const;
    void computeGains();

    SensorArray m_array;
    CorrectionSwitch m_switch;
    RegisterMap::Register const* m_switchRegister;
    std::vector<RegisterMap::Register const*> m_registers; ///< origin column and row, then plane by plane
    std::vector<uint32_t> m_values;                        ///< of the registers when the gains were computed
    Field m_gains;
};

} // namespace simulator
