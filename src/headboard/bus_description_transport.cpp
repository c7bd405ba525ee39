#include "headboard/eeprom_transport.h"

namespace {

constexpr uint32_t kSerialBus = 1;
constexpr uint32_t kDataBits = 8;

uint32_t bytesAt(std::span<uint8_t const> bytes, size_t i) {
    return i + 1 < bytes.size() ? 2 : 1;
}

} // namespace

vy_RegisterDescription BusDescriptionTransport::describe(uint32_t address, uint32_t byteCount) const {
    return {.name = nullptr,
            .addressSpace = kSerialBus,
            .id = m_deviceAddress,
            .address = address,
            .addressWidth = m_addressBits,
            .dataWidth = kDataBits,
            .accessSize = byteCount,
            .dataType = 0,
            .reserved = 0};
}

int BusDescriptionTransport::read(uint32_t offset, std::span<uint8_t> bytes) const {
    for (size_t i = 0; i < bytes.size(); i += 2) {
        uint32_t const count = bytesAt(bytes, i);
        uint32_t value = 0;
        int const result = m_sensor.readRegister(describe(uint32_t(offset + i), count), value);
        if (result != 0)
            return result;
        bytes[i] = uint8_t(count == 2 ? value >> 8 : value);
        if (count == 2)
            bytes[i + 1] = uint8_t(value);
    }
    return 0;
}

int BusDescriptionTransport::write(uint32_t offset, std::span<uint8_t const> bytes) const {
    for (size_t i = 0; i < bytes.size(); i += 2) {
        uint32_t const count = bytesAt(bytes, i);
        uint32_t const value = count == 2 ? uint32_t(bytes[i]) << 8 | bytes[i + 1] : bytes[i];
        int const result = m_sensor.writeRegister(describe(uint32_t(offset + i), count), value);
        if (result != 0)
            return result;
    }
    return 0;
}
