#pragma once

#include "simulator/camera/light_field.h"
#include "simulator/camera/register_map.h"
#include "simulator/camera/sensor_layout.h"

#include <vector>

namespace simulator {
/// One bank of correction registers: a polynomial gain for each plane around the bank's origin.
class GainPolynomial {
public:
    /// The bank names registers of the map, which outlives this object.
    GainPolynomial(SensorArray const& array, SensorLayout::Bank const& bank, RegisterMap& registers);

    /// The gain of each photosite by the present registers; computed anew only when one of them has changed.
    [[nodiscard]] Field const& gains();

private:
    [[nodiscard]] std::vector<uint32_t> registerValues() const;
    void computeGains();

    SensorArray m_array;
    std::vector<RegisterMap::Register const*> m_registers; ///< origin column and row, then plane by plane
    std::vector<uint32_t> m_values;                        ///< of the registers when the gains were computed
    Field m_gains;
};
} // namespace simulator
