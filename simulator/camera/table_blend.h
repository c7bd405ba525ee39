#pragma once

#include "simulator/camera/illuminant.h"
#include "simulator/camera/profile.h"
#include "simulator/camera/register_map.h"

#include <array>
#include <optional>

namespace simulator {
/// How a sensor mixes its three tables in the light that it sees, told by registers.
class TableBlend {
public:
    /// The choice names registers of the map, which outlives this object.
    TableBlend(TableChoice const& choice, RegisterMap& registers);

    /// Which tables, 0 to 2 from left to right, and how much of each. Whatever the registers hold gives an
    /// answer; tables of the same temperature do not mix.
    [[nodiscard]] IlluminantBlend at(double kelvin) const;

private:
    [[nodiscard]] std::optional<size_t> heldTable() const;

    std::array<RegisterMap::Register const*, kTableCount> m_temperatures{};
    std::optional<RegisterSwitch> m_automatic;
    RegisterMap::Register const* m_automaticRegister = nullptr;
    RegisterMap::Register const* m_zone = nullptr;
};
} // namespace simulator
