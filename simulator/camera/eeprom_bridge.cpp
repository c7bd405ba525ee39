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
    if (m_transfer->isAcknowledged && m_transfer->nextByte)
        return goOnInNextPage();
    m_status->value = m_transfer->isAcknowledged ? kStatusAcknowledged : 0;
    m_data->value = m_transfer->data.value_or(m_data->value);
    m_transfer.reset();
}

int EepromBridge::written(RegisterMap::Register const& reg) {
    return m_isThere && &reg == m_command ? start(reg.value) : kDone;
}

int EepromBridge::start(uint32_t command) {
    Transfer transfer;
    transfer.device = m_bus->behindBridge(m_deviceAddress->value);
    BusAnswer const answer = move(command, transfer);
    if (answer == BusAnswer::TransportFailed)
        return kNoAnswer;
    schedule(answer, transfer);
    m_status->value = kStatusBusy;
    m_transfer = transfer;
    return kDone;
}

void EepromBridge::schedule(BusAnswer answer, Transfer& transfer) const {
    transfer.endsAt.reset();
    transfer.isAcknowledged = answer == BusAnswer::Acknowledged;
    if (answer == BusAnswer::Busy)
        return;
    transfer.endsAt = m_bus->clock().now() + kTransferTime;
    if (transfer.isAcknowledged)
        transfer.endsAt = std::max(*transfer.endsAt, transfer.device->readyAt());
}

void EepromBridge::goOnInNextPage() {
    uint8_t const byte = *m_transfer->nextByte;
    m_transfer->nextByte.reset();
    // There is no call of the host to fail here: a transport that fails is a device that keeps silent.
    schedule(m_transfer->device->write(m_transfer->nextAddress, {&byte, 1}), *m_transfer);
}

BusAnswer EepromBridge::move(uint32_t command, Transfer& transfer) const {
    if (!transfer.device)
        return BusAnswer::NotAcknowledged;
    size_t const count = (command & kCommandTwoBytes) != 0 ? 2 : 1;
    switch (command & ~kCommandTwoBytes) {
    case kCommandRead:
        return read(count, transfer);
    case kCommandWrite:
        return write(count, transfer);
    default: // an unknown command addresses nobody
        return BusAnswer::NotAcknowledged;
    }
}

BusAnswer EepromBridge::read(size_t count, Transfer& transfer) const {
    std::array<uint8_t, 2> bytes{};
    BusAnswer const answer = transfer.device->read(m_address->value, std::span(bytes).last(count));
    if (answer == BusAnswer::Acknowledged)
        transfer.data = uint32_t(bytes[0]) << 8 | bytes[1];
    return answer;
}

BusAnswer EepromBridge::write(size_t count, Transfer& transfer) const {
    std::array<uint8_t, 2> const bytes = {uint8_t(m_data->value >> 8), uint8_t(m_data->value)};
    std::span<uint8_t const> const written = std::span(bytes).last(count);
    size_t const inPage = countInPage(m_address->value, count);
    if (inPage < count) {
        transfer.nextAddress = m_address->value + uint32_t(inPage);
        transfer.nextByte = written.back();
    }
    return transfer.device->write(m_address->value, written.first(inPage));
}
} // namespace simulator
