#include "simulator/camera/register_map.h"

#include <bit>
#include <utility>

namespace simulator {
namespace {
uint32_t widthMask(vy_RegisterDescription const& description) {
    return 0xFFFFFFFF >> (32 - description.dataWidth);
}
} // namespace

uint32_t dataTypeSize(uint32_t dataType) { return dataType < 6 ? 1U << dataType / 2 : 0; }

void RegisterMap::add(Register reg) {
    vy_RegisterDescription& told = reg.description;
    told.name = reg.name.constData();
    told.accessSize = dataTypeSize(told.dataType);
    reg.value &= widthMask(told);
    std::tuple const place(told.addressSpace, told.id, told.address);
    Register* const added = &m_registers.emplace_back(std::move(reg));
    m_byName.insert(added->name, added);
    m_byPlace.insert(place, added);
}

RegisterMap::Register* RegisterMap::find(char const* name) {
    return m_byName.value(QByteArray::fromRawData(name, int(qstrlen(name))));
}

RegisterMap::Register* RegisterMap::find(uint32_t addressSpace, uint32_t id, uint32_t address) {
    return m_byPlace.value({addressSpace, id, address});
}

vy_BitfieldDescription const* RegisterMap::findBitfield(Register const& reg, char const* name) {
    auto const found = reg.bitfields.constFind(name);
    return found == reg.bitfields.constEnd() ? nullptr : &*found;
}

uint32_t RegisterMap::read(Register& reg, uint32_t mask) {
    if (!reg.cached || reg.isVolatile)
        reg.cached = reg.value;
    return (*reg.cached & mask) >> std::countr_zero(mask);
}

void RegisterMap::write(Register& reg, uint32_t value, uint32_t mask) {
    // The untouched bits come from the cache, as on a bus where a read costs as much as a write.
    uint32_t const others = mask == 0xFFFFFFFF ? 0 : read(reg) & ~mask;
    reg.value = (others | ((value << std::countr_zero(mask)) & mask)) & widthMask(reg.description);
    reg.cached = reg.value;
    ++m_writes;
}

void RegisterMap::dropCache() {
    for (Register& reg : m_registers)
        reg.cached.reset();
}
} // namespace simulator
