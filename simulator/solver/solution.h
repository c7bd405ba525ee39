#pragma once

#include "published/shadefit.h"
#include "simulator/solver/gain_fit.h"

#include <QByteArray>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace solver {
/// The correction for one illuminant.
struct Table {
    uint32_t colourTemperature = 0; ///< kelvin
    BankCoefficients coefficients{};
};

/// What was found so far. Empty: no solution.
struct Solution {
    uint32_t falloffPercent = 100;
    std::optional<BankCoefficients> base; ///< the correction that always holds
    std::map<uint32_t, Table> tables;     ///< by slot

    [[nodiscard]] bool empty() const { return !base && tables.empty(); }
};

/// All registers in the order in which they are to be written: the origin, the base's coefficients when there
/// is one, then table by table its origin where it has its own, its coefficients, and its colour temperature
/// where the sensor asks for it. Every bank is one of the layout's.
[[nodiscard]] std::vector<sf_RegEntry> allRegisters(SensorLayout const& layout, Solution const& solution);

/// How a preset file tells the tables apart.
enum class PresetFormat : uint32_t {
    Plain = 0,  ///< one run of lines
    Tables = 2, ///< a comment line before each table
};

/// A solution as lines of the host's preset "Lens Correction": `REG = <id>, <address>, <value>`.
[[nodiscard]] QByteArray presetText(SensorLayout const& layout, Solution const& solution,
                                    PresetFormat format);
} // namespace solver
