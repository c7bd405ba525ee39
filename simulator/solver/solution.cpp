#include "simulator/solver/solution.h"

namespace solver {
namespace {
using Bank = SensorLayout::Bank;
using Registers = std::vector<sf_RegEntry>;

void append(Registers& list, simulator::RegisterPlace const& place, uint32_t value) {
    list.push_back({place.id, place.address, value});
}

void append(Registers& list, SensorLayout::Origin const& origin, Geometry const& array) {
    append(list, origin.column, uint32_t(array.originColumn()));
    append(list, origin.row, uint32_t(array.originRow()));
}

void append(Registers& list, Bank const& bank, BankCoefficients const& coefficients) {
    for (size_t plane = 0; plane < kPlaneCount; ++plane)
        for (uint32_t i = 0; i < kTerms; ++i)
            append(list, bank.planes[plane].place(i), coefficients[plane][i]);
}

Registers baseRegisters(SensorLayout const& layout, Solution const& solution) {
    Registers list;
    append(list, layout.origin, Geometry(layout));
    if (solution.base)
        append(list, *layout.bank(simulator::kBaseSlot), *solution.base);
    return list;
}

Registers tableRegisters(SensorLayout const& layout, uint32_t slot, Table const& table) {
    Registers list;
    Bank const& bank = *layout.bank(slot);
    if (bank.origin)
        append(list, *bank.origin, Geometry(layout));
    append(list, bank, table.coefficients);
    if (bank.colourTemperature)
        append(list, *bank.colourTemperature, table.colourTemperature);
    return list;
}

QByteArray hexadecimal(uint32_t value) {
    return "0x" + QByteArray::number(value, 16).toUpper().rightJustified(4, '0');
}

QByteArray lines(Registers const& entries) {
    QByteArray text;
    for (sf_RegEntry const& entry : entries)
        text += "REG = " + hexadecimal(entry.first) + ", " + hexadecimal(entry.second) + ", " +
                hexadecimal(entry.third) + '\n';
    return text;
}
} // namespace

std::vector<sf_RegEntry> allRegisters(SensorLayout const& layout, Solution const& solution) {
    Registers list = baseRegisters(layout, solution);
    for (auto const& [slot, table] : solution.tables) {
        Registers const registers = tableRegisters(layout, slot, table);
        list.insert(list.end(), registers.begin(), registers.end());
    }
    return list;
}

QByteArray presetText(SensorLayout const& layout, Solution const& solution, PresetFormat format) {
    QByteArray text = "[Lens Correction]\n";
    text += "; sensor kind " + QByteArray::number(layout.kind) + ", variant " +
            QByteArray::number(layout.variant) + '\n';
    text += "; corners at " + QByteArray::number(solution.falloffPercent) + " % of the centre\n";
    text += lines(baseRegisters(layout, solution));
    for (auto const& [slot, table] : solution.tables) {
        if (format == PresetFormat::Tables)
            text += "; illuminant slot " + QByteArray::number(slot) + ", " +
                    QByteArray::number(table.colourTemperature) + " K\n";
        text += lines(tableRegisters(layout, slot, table));
    }
    return text;
}

} // namespace solver
