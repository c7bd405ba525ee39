#include "simulator/camera/headboard_bus.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace simulator {
namespace {
constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeWordBits = 2;

constexpr uint32_t kAddressBits = 16; // of the device
constexpr uint32_t kWordBits = 8;
constexpr uint32_t kLargestAddress = 0xFFFF;

enum BridgeRegister : size_t { kDevice, kAddress, kCommand, kStatus, kData };

constexpr uint32_t kCommandRead = 0x010;
constexpr uint32_t kCommandWrite = 0x080;
constexpr uint32_t kCommandTwoBytes = 0x200;
constexpr uint32_t kStatusAcknowledged = 0x04;
constexpr uint32_t kStatusBusy = 0x10;

// Five bytes at 100 kHz take half of it.
constexpr std::chrono::milliseconds kBridgeTime{1};

using TwoBytes = std::array<uint8_t, 2>; // big byte first

// How a transfer ends that `work` does when the device is there and can do it.
template <typename Work>
int transferred(EepromDevice const* reached, bool fits, Work work) {
    if (!reached || !fits)
        return reached ? kBadArgument : kNoAnswer;
    return work() == BusAnswer::Acknowledged ? kDone : kNoAnswer;
}

bool fitsDevice(vy_RegisterDescription const& told) {
    return told.addressWidth == kAddressBits && told.address <= kLargestAddress &&
           (told.accessSize == 1 || told.accessSize == 2);
}

uint32_t valueOf(TwoBytes const& bytes) { return uint32_t(bytes[0]) << 8 | bytes[1]; }
TwoBytes bytesOf(uint32_t value) { return {uint8_t(value >> 8), uint8_t(value)}; }
} // namespace

BusAnswer PagedWrite::next(EepromDevice& device) {
    size_t const count = std::min<size_t>(left, kEepromPageSize - address % kEepromPageSize);
    BusAnswer const answer = device.write(address, std::span(bytes).last(left).first(count));
    address += uint32_t(count);
    left -= count;
    return answer;
}

HeadboardBus::HeadboardBus(Profile const& profile)
    : device(profile.eeprom.isFormatted ? formattedContents() : blankContents(), clock),
      m_section(profile.eeprom), m_addressBits(profile.sensor.registerAddressWidth),
      m_wordBits(profile.sensor.registerDataWidth) {}

int HeadboardBus::setMode(uint32_t mode, uint32_t value) {
    if (mode == kModeAddressBits)
        m_addressBits = value;
    if (mode == kModeWordBits)
        m_wordBits = value;
    return kDone;
}

EepromDevice* HeadboardBus::find(EepromWiring wiring, uint32_t busAddress) {
    return m_section.wiring == wiring && m_section.busAddress == busAddress ? &device : nullptr;
}

bool HeadboardBus::fits(uint32_t start, size_t count) const {
    return m_addressBits == kAddressBits && m_wordBits == kWordBits && start <= kLargestAddress &&
           count > 0 && count <= kEepromSize;
}

int HeadboardBus::readRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) {
    auto const read = [&] {
        std::vector<uint8_t> bytes(words.size());
        BusAnswer const answer = device.read(start, bytes);
        if (answer == BusAnswer::Acknowledged)
            std::copy(bytes.begin(), bytes.end(), words.begin());
        return answer;
    };
    return transferred(find(EepromWiring::Serial, busAddress), fits(start, words.size()), read);
}

int HeadboardBus::writeRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) {
    auto const write = [&] {
        std::vector<uint8_t> const bytes(words.begin(), words.end()); // what lies above a byte is dropped
        return device.write(start, bytes);
    };
    return transferred(find(EepromWiring::Serial, busAddress), fits(start, words.size()), write);
}

int HeadboardBus::readDescribed(vy_RegisterDescription const& location, uint32_t& value) {
    auto const read = [&] {
        TwoBytes bytes{};
        BusAnswer const answer = device.read(location.address, std::span(bytes).last(location.accessSize));
        if (answer == BusAnswer::Acknowledged)
            value = valueOf(bytes);
        return answer;
    };
    return transferred(find(EepromWiring::BusMaster, location.id), fitsDevice(location), read);
}

int HeadboardBus::writeDescribed(vy_RegisterDescription const& location, uint32_t value) {
    auto const write = [&] {
        for (PagedWrite rest{location.address, bytesOf(value), location.accessSize}; rest.left > 0;) {
            if (BusAnswer const answer = rest.next(device); answer != BusAnswer::Acknowledged)
                return answer;
            clock.wait(device.readyAt() - clock.now());
        }
        return BusAnswer::Acknowledged;
    };
    return transferred(find(EepromWiring::BusMaster, location.id), fitsDevice(location), write);
}

EepromBridge::EepromBridge(RegisterMap& registers, HeadboardBus& bus) : m_bus(bus) {
    std::transform(kBridgeRegisters.begin(), kBridgeRegisters.end(), m_registers.begin(),
                   [&](char const* name) { return registers.find(name); });
    m_isThere = std::count(m_registers.begin(), m_registers.end(), nullptr) == 0;
    if (m_isThere)
        m_registers[kStatus]->isVolatile = m_registers[kData]->isVolatile = true;
}

void EepromBridge::refresh() {
    if (!m_transfer || m_transfer->answer == BusAnswer::Busy || m_bus.clock.now() < m_transfer->endsAt)
        return;
    bool const isAcknowledged = m_transfer->answer == BusAnswer::Acknowledged;
    // There is no call of the host to fail here: a transport that fails is a device that keeps silent.
    if (isAcknowledged && m_transfer->write.left > 0)
        return schedule(m_transfer->write.next(*m_transfer->device), *m_transfer);
    m_registers[kStatus]->value = isAcknowledged ? kStatusAcknowledged : 0;
    m_registers[kData]->value = m_transfer->data.value_or(m_registers[kData]->value);
    m_transfer.reset();
}

int EepromBridge::written(RegisterMap::Register const& reg) {
    if (!m_isThere || &reg != m_registers[kCommand])
        return kDone;
    Transfer transfer{.device = m_bus.find(EepromWiring::Bridge, m_registers[kDevice]->value)};
    BusAnswer const answer = transfer.device ? begin(reg.value, transfer) : BusAnswer::NotAcknowledged;
    if (answer == BusAnswer::TransportFailed)
        return kNoAnswer;
    schedule(answer, transfer);
    m_registers[kStatus]->value = kStatusBusy;
    m_transfer = transfer;
    return kDone;
}

void EepromBridge::schedule(BusAnswer answer, Transfer& transfer) const {
    transfer.answer = answer;
    transfer.endsAt = m_bus.clock.now() + kBridgeTime;
    if (answer == BusAnswer::Acknowledged)
        transfer.endsAt = std::max(transfer.endsAt, transfer.device->readyAt());
}

BusAnswer EepromBridge::begin(uint32_t command, Transfer& transfer) const {
    size_t const count = (command & kCommandTwoBytes) != 0 ? 2 : 1;
    uint32_t const address = m_registers[kAddress]->value;
    if ((command & ~kCommandTwoBytes) == kCommandWrite) {
        transfer.write = {address, bytesOf(m_registers[kData]->value), count};
        return transfer.write.next(*transfer.device);
    }
    if ((command & ~kCommandTwoBytes) != kCommandRead)
        return BusAnswer::NotAcknowledged; // an unknown command addresses nobody
    TwoBytes bytes{};
    BusAnswer const answer = transfer.device->read(address, std::span(bytes).last(count));
    if (answer == BusAnswer::Acknowledged)
        transfer.data = valueOf(bytes);
    return answer;
}
} // namespace simulator
