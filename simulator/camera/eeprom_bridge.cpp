#include "simulator/camera/eeprom_bridge.h"

#include <algorithm>
#include <chrono>
#include <span>

namespace simulator {
namespace {

constexpr uint32_t kCommandRead = 0x010;
constexpr uint32_t kCommandWrite = 0x080;
constexpr uint32_t kCommandTwoBytes = 0x200;

constexpr uint32_t kStatusAcknowledged = 0x04;
constexpr uint32_t kStatusBusy = 0x10;

// Five bytes at 100 kHz take half of it.
constexpr std::chrono::milliseconds kTransferTime{1};

} // namespace

EepromBridge::EepromBridge(RegisterMap& registers, HeadboardBus& bus)
    : m_bus(&bus), m_deviceAddress(registers.find("IO_EEPROM_I2C_ADDR")),
      m_address(registers.find("IO_EEPROM_ADDR")), m_command(registers.find("IO_EEPROM_COMMAND")),
      m_status(registers.find("IO_EEPROM_STATUS")), m_data(registers.find("IO_EEPROM_DATA")),
      m_isThere(m_deviceAddress && m_address && m_command && m_status && m_data) {
    if (!m_isThere)
        return;
    m_status->isVolatile = true;
    m_data->isVolatile = true;
}

void EepromBridge::refresh() {
    if (!m_transfer || !m_transfer->endsAt || m_bus->clock().now() < *m_transfer->endsAt)
        return;
    m_status->value = m_transfer->isAcknowledged ? kStatusAcknowledged : 0;
    m_data->value = m_transfer->data.value_or(m_data->value);
    m_transfer.reset();
}

int EepromBridge::written(RegisterMap::Register const& reg) {
    return m_isThere && &reg == m_command ? start(reg.value) : kDone;
}

int EepromBridge::start(uint32_t command) {
    Transfer transfer;
    EepromDevice* const device = m_bus->behindBridge(m_deviceAddress->value);
    BusAnswer const answer = move(command, device, transfer);
    if (answer == BusAnswer::TransportFailed)
        return kNoAnswer;
    transfer.isAcknowledged = answer == BusAnswer::Acknowledged;
    if (answer != BusAnswer::Busy) {
        transfer.endsAt = m_bus->clock().now() + kTransferTime;
        if (transfer.isAcknowledged)
            transfer.endsAt = std::max(*transfer.endsAt, device->readyAt());
    }
    m_status->value = kStatusBusy;
    m_transfer = transfer;
    return kDone;
}

BusAnswer EepromBridge::move(uint32_t command, EepromDevice* device, Transfer& transfer) const {
    if (!device)
        return BusAnswer::NotAcknowledged;
    size_t const count = (command & kCommandTwoBytes) != 0 ? 2 : 1;
    std::array<uint8_t, 2> bytes = {uint8_t(m_data->value >> 8), uint8_t(m_data->value)};
    std::span<uint8_t> const moved = std::span(bytes).last(count);
    switch (command & ~kCommandTwoBytes) {
    case kCommandRead: {
        bytes = {};
        BusAnswer const answer = device->read(m_address->value, moved);
        if (answer == BusAnswer::Acknowledged)
            transfer.data = uint32_t(bytes[0]) << 8 | bytes[1];
        return answer;
    }
    case kCommandWrite:
        return device->write(m_address->value, moved);
    default: // an unknown command addresses nobody
        return BusAnswer::NotAcknowledged;
    }
}

} // namespace simulator
