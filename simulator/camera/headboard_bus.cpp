#include "simulator/camera/headboard_bus.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

namespace simulator {
namespace {
constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeWordBits = 2;

constexpr uint32_t kAddressBits = 16; // of the device
constexpr uint32_t kWordBits = 8;
constexpr uint32_t kLargestAddress = 0xFFFF;

constexpr uint32_t kCommandRead = 0x010;
constexpr uint32_t kCommandWrite = 0x080;
constexpr uint32_t kCommandTwoBytes = 0x200;
constexpr uint32_t kStatusAcknowledged = 0x04;
constexpr uint32_t kStatusBusy = 0x10;

// Five bytes at 100 kHz take half of it.
constexpr std::chrono::milliseconds kBridgeTime{1};

using TwoBytes = std::array<uint8_t, 2>; // big byte first

int status(BusAnswer answer) { return answer == BusAnswer::Acknowledged ? kDone : kNoAnswer; }

int locationFault(EepromDevice const* device, vy_RegisterDescription const& told) {
    bool const fits = told.addressWidth == kAddressBits && told.address <= kLargestAddress &&
                      (told.accessSize == 1 || told.accessSize == 2);
    return !device ? kNoAnswer : fits ? kDone : kBadArgument;
}
} // namespace

HeadboardBus::HeadboardBus(Profile const& profile)
    : m_section(profile.eeprom), m_addressBits(profile.registerAddressWidth),
      m_wordBits(profile.registerDataWidth) {
    if (m_section.wiring != EepromWiring::None)
        m_device.emplace(m_section.isFormatted ? formattedContents() : blankContents(), m_clock);
}

int HeadboardBus::setMode(uint32_t mode, uint32_t value) {
    if (mode == kModeAddressBits)
        m_addressBits = value;
    if (mode == kModeWordBits)
        m_wordBits = value;
    return kDone;
}

EepromDevice* HeadboardBus::find(EepromWiring wiring, uint32_t busAddress) {
    return m_section.wiring == wiring && m_section.busAddress == busAddress ? &*m_device : nullptr;
}

int HeadboardBus::rawFault(EepromDevice const* device, uint32_t start, size_t count) const {
    bool const fits = m_addressBits == kAddressBits && m_wordBits == kWordBits && start <= kLargestAddress &&
                      count > 0 && count <= kEepromSize;
    return !device ? kNoAnswer : fits ? kDone : kBadArgument;
}

int HeadboardBus::readRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) {
    EepromDevice* const device = find(EepromWiring::Serial, busAddress);
    if (int const fault = rawFault(device, start, words.size()))
        return fault;
    std::vector<uint8_t> bytes(words.size());
    int const result = status(device->read(start, bytes));
    if (result == kDone)
        std::copy(bytes.begin(), bytes.end(), words.begin());
    return result;
}

int HeadboardBus::writeRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) {
    EepromDevice* const device = find(EepromWiring::Serial, busAddress);
    if (int const fault = rawFault(device, start, words.size()))
        return fault;
    std::vector<uint8_t> bytes(words.size());
    std::transform(words.begin(), words.end(), bytes.begin(), [](uint32_t word) { return uint8_t(word); });
    return status(device->write(start, bytes));
}

int HeadboardBus::readDescribed(vy_RegisterDescription const& location, uint32_t& value) {
    EepromDevice* const device = find(EepromWiring::BusMaster, location.id);
    if (int const fault = locationFault(device, location))
        return fault;
    TwoBytes bytes{};
    int const result = status(device->read(location.address, std::span(bytes).last(location.accessSize)));
    if (result == kDone)
        value = uint32_t(bytes[0]) << 8 | bytes[1];
    return result;
}

int HeadboardBus::writeDescribed(vy_RegisterDescription const& location, uint32_t value) {
    EepromDevice* const device = find(EepromWiring::BusMaster, location.id);
    if (int const fault = locationFault(device, location))
        return fault;
    TwoBytes const bytes = {uint8_t(value >> 8), uint8_t(value)};
    uint32_t address = location.address;
    for (auto rest = std::span(bytes).last(location.accessSize); !rest.empty();) {
        size_t const count = countInPage(address, rest.size());
        int const result = status(device->write(address, rest.first(count)));
        if (result != kDone)
            return result;
        m_clock.wait(device->readyAt() - m_clock.now());
        address += uint32_t(count);
        rest = rest.subspan(count);
    }
    return kDone;
}

EepromBridge::EepromBridge(RegisterMap& registers, HeadboardBus& bus)
    : m_bus(&bus), m_deviceAddress(registers.find("IO_EEPROM_I2C_ADDR")),
      m_address(registers.find("IO_EEPROM_ADDR")), m_command(registers.find("IO_EEPROM_COMMAND")),
      m_status(registers.find("IO_EEPROM_STATUS")), m_data(registers.find("IO_EEPROM_DATA")),
      m_isThere(m_deviceAddress && m_address && m_command && m_status && m_data) {
    if (m_isThere)
        m_status->isVolatile = m_data->isVolatile = true;
}

void EepromBridge::refresh() {
    if (!m_transfer || !m_transfer->endsAt || m_bus->clock().now() < *m_transfer->endsAt)
        return;
    if (m_transfer->isAcknowledged && m_transfer->nextByte) {
        uint8_t const byte = *m_transfer->nextByte;
        m_transfer->nextByte.reset();
        // There is no call of the host to fail here: a transport that fails is a device that keeps silent.
        return schedule(m_transfer->device->write(m_transfer->nextAddress, {&byte, 1}), *m_transfer);
    }
    m_status->value = m_transfer->isAcknowledged ? kStatusAcknowledged : 0;
    m_data->value = m_transfer->data.value_or(m_data->value);
    m_transfer.reset();
}

int EepromBridge::written(RegisterMap::Register const& reg) {
    if (!m_isThere || &reg != m_command)
        return kDone;
    Transfer transfer{.device = m_bus->find(EepromWiring::Bridge, m_deviceAddress->value)};
    BusAnswer const answer = transfer.device ? move(reg.value, transfer) : BusAnswer::NotAcknowledged;
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
    transfer.endsAt = m_bus->clock().now() + kBridgeTime;
    if (transfer.isAcknowledged)
        transfer.endsAt = std::max(*transfer.endsAt, transfer.device->readyAt());
}

BusAnswer EepromBridge::move(uint32_t command, Transfer& transfer) const {
    size_t const count = (command & kCommandTwoBytes) != 0 ? 2 : 1;
    uint32_t const address = m_address->value;
    TwoBytes bytes{};
    switch (command & ~kCommandTwoBytes) {
    case kCommandRead: {
        BusAnswer const answer = transfer.device->read(address, std::span(bytes).last(count));
        if (answer == BusAnswer::Acknowledged)
            transfer.data = uint32_t(bytes[0]) << 8 | bytes[1];
        return answer;
    }
    case kCommandWrite: {
        bytes = {uint8_t(m_data->value >> 8), uint8_t(m_data->value)};
        size_t const inPage = countInPage(address, count);
        if (inPage < count) {
            transfer.nextAddress = address + uint32_t(inPage);
            transfer.nextByte = bytes.back();
        }
        return transfer.device->write(address, std::span(bytes).last(count).first(inPage));
    }
    default: // an unknown command addresses nobody
        return BusAnswer::NotAcknowledged;
    }
}
} // namespace simulator
