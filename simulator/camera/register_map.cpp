#include "simulator/camera/register_map.h"

#include <array>
#include <bit>

namespace simulator {
namespace {
constexpr std::array<uint32_t, 6> kDataTypeSizes = {1, 1, 2, 2, 4, 4};

constexpr uint32_t kLargestHalf = 0xFFFF; // address-space kinds and ids share the upper word of a place

quint64 placeOf(uint32_t addressSpace, uint32_t id, uint32_t address) {
    return (quint64(addressSpace) << 48) | (quint64(id) << 32) | address;
}

uint32_t widthMask(vy_RegisterDescription const& description) {
    return description.dataWidth >= 32 ? 0xFFFFFFFF : (1U << description.dataWidth) - 1;
}

uint32_t shiftOf(uint32_t mask) { return mask == 0 ? 0 : uint32_t(std::countr_zero(mask)); }
} // namespace

uint32_t dataTypeSize(uint32_t dataType) {
    return dataType < kDataTypeSizes.size() ? kDataTypeSizes[dataType] : 0;
}

RegisterMap::RegisterMap(std::vector<RegisterDefinition> const& definitions) {
    m_registers.reserve(definitions.size()); // nothing moves any more
    for (RegisterDefinition const& definition : definitions) {
        vy_RegisterDescription const& told = definition.description;
        m_byName.insert(definition.name, m_registers.size());
        m_byAddress.insert(placeOf(told.addressSpace, told.id, told.address), m_registers.size());
        Register& reg = m_registers.emplace_back();
        reg.name = definition.name;
        reg.description = told;
        reg.description.name = reg.name.constData();
        reg.description.accessSize = dataTypeSize(told.dataType);
        reg.bitfields = definition.bitfields;
        for (Bitfield const& bitfield : reg.bitfields)
            reg.bitfieldDescriptions.push_back({bitfield.name.constData(), bitfield.mask, 0});
        reg.value = definition.reset & widthMask(told);
    }
}

RegisterMap::Register* RegisterMap::find(char const* name) {
    auto const found = m_byName.constFind(QByteArray::fromRawData(name, int(qstrlen(name))));
    return found == m_byName.constEnd() ? nullptr : &m_registers[*found];
}

RegisterMap::Register* RegisterMap::find(uint32_t addressSpace, uint32_t id, uint32_t address) {
    if (addressSpace > kLargestHalf || id > kLargestHalf)
        return nullptr;
    auto const found = m_byAddress.constFind(placeOf(addressSpace, id, address));
    return found == m_byAddress.constEnd() ? nullptr : &m_registers[*found];
}

vy_BitfieldDescription const* RegisterMap::findBitfield(Register const& reg, char const* name) {
    for (vy_BitfieldDescription const& bitfield : reg.bitfieldDescriptions)
        if (qstrcmp(bitfield.name, name) == 0)
            return &bitfield;
    return nullptr;
}

uint32_t RegisterMap::read(Register& reg, uint32_t mask) {
    if (!reg.isCached || reg.isVolatile) {
        reg.cached = reg.value;
        reg.isCached = true;
    }
    return (reg.cached & mask) >> shiftOf(mask);
}

void RegisterMap::write(Register& reg, uint32_t value, uint32_t mask) {
    // The untouched bits come from the cache, as on a bus where a read costs as much as a write.
    uint32_t const others = mask == 0xFFFFFFFF ? 0 : read(reg) & ~mask;
    reg.value = (others | ((value << shiftOf(mask)) & mask)) & widthMask(reg.description);
    reg.cached = reg.value;
    reg.isCached = true;
    ++m_writes;
}

void RegisterMap::dropCache() {
    for (Register& reg : m_registers)
        reg.isCached = false;
}
} // namespace simulator
