#pragma once

#include "published/shadefit.h"
#include "simulator/solver/gain_fit.h"
#include "simulator/solver/layout.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace solver {
/// The correction for one illuminant slot.
struct Table {
    uint32_t slot = 0;
    uint32_t colourTemperature = 0; ///< kelvin
    BankCoefficients coefficients{};
};

/// What was found so far. Empty: no solution.
struct Solution {
    uint32_t falloffPercent = 100;
    std::optional<BankCoefficients> base; ///< the correction that always holds
    std::vector<Table> tables;            ///< by ascending slot

    [[nodiscard]] bool empty() const { return !base && tables.empty(); }
};

/// Registers of the base: the origin, then the base's coefficients when there is one.
[[nodiscard]] std::vector<sf_RegEntry> baseRegisters(SensorLayout const& layout, Solution const& solution);

/// Registers of one table: its origin where it has its own, its coefficients, then its colour temperature
/// where the sensor asks for it.
[[nodiscard]] std::vector<sf_RegEntry> tableRegisters(SensorLayout const& layout, Table const& table);

/// All registers in the order in which they are to be written. Every bank is one of the layout's.
[[nodiscard]] std::vector<sf_RegEntry> allRegisters(SensorLayout const& layout, Solution const& solution);
} // namespace solver
