#include "simulator/solver/register_list.h"

namespace solver {
namespace {
sf_RegEntry entry(RegisterPlace const& place, uint32_t value) { return {place.id, place.address, value}; }

void appendOrigin(std::vector<sf_RegEntry>& list, OriginRegisters const& origin, Geometry const& array) {
    list.push_back(entry(origin.column, static_cast<uint32_t>(array.originColumn())));
    list.push_back(entry(origin.row, static_cast<uint32_t>(array.originRow())));
}

void append(std::vector<sf_RegEntry>& list, BankRegisters const& bank, BankCoefficients const& coefficients) {
    for (size_t k = 0; k < kPlanes; ++k) {
        RegisterPlace place = bank.planes[k].first;
        for (uint16_t const coefficient : coefficients[k]) {
            list.push_back(entry(place, coefficient));
            place.address += bank.planes[k].stride;
        }
    }
}
} // namespace

std::vector<sf_RegEntry> baseRegisters(SensorLayout const& layout, Solution const& solution) {
    std::vector<sf_RegEntry> list;
    appendOrigin(list, layout.origin, layout.array);
    BankRegisters const* const bank = layout.bank(0);
    if (solution.base && bank != nullptr)
        append(list, *bank, *solution.base);
    return list;
}

std::vector<sf_RegEntry> tableRegisters(SensorLayout const& layout, Table const& table) {
    std::vector<sf_RegEntry> list;
    BankRegisters const* const bank = layout.bank(table.slot);
    if (bank == nullptr)
        return list;
    if (bank->origin)
        appendOrigin(list, *bank->origin, layout.array);
    append(list, *bank, table.coefficients);
    if (bank->colourTemperature)
        list.push_back(entry(*bank->colourTemperature, table.colourTemperature));
    return list;
}

std::vector<sf_RegEntry> allRegisters(SensorLayout const& layout, Solution const& solution) {
    std::vector<sf_RegEntry> list = baseRegisters(layout, solution);
    for (Table const& table : solution.tables) {
        auto const registers = tableRegisters(layout, table);
        list.insert(list.end(), registers.begin(), registers.end());
    }
    return list;
}
} // namespace solver
