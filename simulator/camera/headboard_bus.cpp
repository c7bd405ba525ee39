#include "simulator/camera/headboard_bus.h"

#include <algorithm>
#include <array>
#include <vector>

namespace simulator {
namespace {
constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeWordBits = 2;

constexpr uint32_t kAddressBits = 16; // of the device
constexpr uint32_t kWordBits = 8;
constexpr uint32_t kLargestAddress = 0xFFFF;

int status(BusAnswer answer) { return answer == BusAnswer::Acknowledged ? kDone : kNoAnswer; }

bool isLocation(vy_RegisterDescription const& description) {
    return description.addressWidth == kAddressBits && description.address <= kLargestAddress &&
           (description.accessSize == 1 || description.accessSize == 2);
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

EepromDevice* HeadboardBus::behindBridge(uint32_t busAddress) {
    return find(EepromWiring::Bridge, busAddress);
}

bool HeadboardBus::fitsRaw(uint32_t start, size_t count) const {
    return m_addressBits == kAddressBits && m_wordBits == kWordBits && start <= kLargestAddress &&
           count > 0 && count <= kEepromSize;
}

int HeadboardBus::readRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) {
    EepromDevice* const device = find(EepromWiring::Serial, busAddress);
    if (!device)
        return kNoAnswer;
    if (!fitsRaw(start, words.size()))
        return kBadArgument;
    std::vector<uint8_t> bytes(words.size());
    int const result = status(device->read(start, bytes));
    if (result == kDone)
        std::copy(bytes.begin(), bytes.end(), words.begin());
    return result;
}

int HeadboardBus::writeRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) {
    EepromDevice* const device = find(EepromWiring::Serial, busAddress);
    if (!device)
        return kNoAnswer;
    if (!fitsRaw(start, words.size()))
        return kBadArgument;
    std::vector<uint8_t> bytes(words.size());
    std::transform(words.begin(), words.end(), bytes.begin(), [](uint32_t word) { return uint8_t(word); });
    return status(device->write(start, bytes));
}

int HeadboardBus::readDescribed(vy_RegisterDescription const& location, uint32_t& value) {
    EepromDevice* const device = find(EepromWiring::BusMaster, location.id);
    if (!device)
        return kNoAnswer;
    if (!isLocation(location))
        return kBadArgument;
    std::array<uint8_t, 2> bytes{};
    int const result = status(device->read(location.address, std::span(bytes).first(location.accessSize)));
    if (result == kDone)
        value = location.accessSize == 2 ? uint32_t(bytes[0]) << 8 | bytes[1] : bytes[0];
    return result;
}

int HeadboardBus::writeDescribed(vy_RegisterDescription const& location, uint32_t value) {
    EepromDevice* const device = find(EepromWiring::BusMaster, location.id);
    if (!device)
        return kNoAnswer;
    if (!isLocation(location))
        return kBadArgument;
    std::array<uint8_t, 2> const bytes = {uint8_t(value >> 8), uint8_t(value)};
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
} // namespace simulator
