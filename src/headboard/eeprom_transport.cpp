#include "headboard/eeprom_transport.h"

#include "common/system.h"

#include <algorithm>
#include <vector>

namespace kestra {

namespace {

constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeDataBits = 2;
constexpr uint32_t kDataBits = 8;
// The device does not answer while it stores what was written.
constexpr std::chrono::milliseconds kWriteCycle{20};

constexpr uint32_t kModeBridge = 3;

constexpr uint32_t kCommandRead = 0x010;
constexpr uint32_t kCommandWrite = 0x080;
constexpr uint32_t kCommandTwoBytes = 0x200;

constexpr uint32_t kStatusAcknowledged = 0x04;
constexpr uint32_t kStatusBusy = 0x10;
constexpr int kMostPolls = 25;
constexpr std::chrono::milliseconds kPollInterval{2};

constexpr int kTransferFailed = 1;

constexpr uint32_t kSerialBus = 1;

uint32_t bytesAt(std::span<uint8_t const> bytes, size_t i) {
    return i + 1 < bytes.size() ? 2 : 1;
}

/// Serial transfers of the library, for all sensors that pass their bus through.
class RawTransport : public EepromTransport {
public:
    RawTransport(Sensor const& sensor, uint32_t deviceAddress, uint32_t addressBits)
        : m_sensor(sensor), m_deviceAddress(deviceAddress), m_addressBits(addressBits) {}
    [[nodiscard]] int read(uint32_t offset, std::span<uint8_t> bytes) const override;
    [[nodiscard]] int write(uint32_t offset, std::span<uint8_t const> bytes) const override;

private:
    [[nodiscard]] int setWidths() const;
    [[nodiscard]] int writeOnce(uint32_t offset, std::span<uint8_t const> bytes) const;

    Sensor const& m_sensor;
    uint32_t m_deviceAddress;
    uint32_t m_addressBits;
};

/// The sensor's own bus master, driven by its registers `IO_EEPROM_*`, two bytes at a time.
class BridgeTransport : public EepromTransport {
public:
    BridgeTransport(Sensor const& sensor, uint32_t deviceAddress)
        : m_sensor(sensor), m_deviceAddress(deviceAddress) {}
    [[nodiscard]] int read(uint32_t offset, std::span<uint8_t> bytes) const override;
    /// Of two bytes that go together, the bridge is handed the second one only and a zero before it.
    [[nodiscard]] int write(uint32_t offset, std::span<uint8_t const> bytes) const override;

private:
    [[nodiscard]] int selectDevice() const;
    [[nodiscard]] int set(char const* reg, uint32_t value) const;
    [[nodiscard]] int runCommand(uint32_t command) const;

    Sensor const& m_sensor;
    uint32_t m_deviceAddress;
};

/// The library's access by description, with a description made for each location, two bytes at a time.
class BusDescriptionTransport : public EepromTransport {
public:
    BusDescriptionTransport(Sensor const& sensor, uint32_t deviceAddress, uint32_t addressBits)
        : m_sensor(sensor), m_deviceAddress(deviceAddress), m_addressBits(addressBits) {}
    [[nodiscard]] int read(uint32_t offset, std::span<uint8_t> bytes) const override;
    [[nodiscard]] int write(uint32_t offset, std::span<uint8_t const> bytes) const override;

private:
    [[nodiscard]] vy_RegisterDescription describe(uint32_t address, uint32_t byteCount) const;

    Sensor const& m_sensor;
    uint32_t m_deviceAddress;
    uint32_t m_addressBits;
};

int RawTransport::setWidths() const {
    int const result = m_sensor.setMode(kModeAddressBits, m_addressBits);
    return result == 0 ? m_sensor.setMode(kModeDataBits, kDataBits) : result;
}

int RawTransport::read(uint32_t offset, std::span<uint8_t> bytes) const {
    int result = setWidths();
    if (result != 0)
        return result;
    std::vector<uint32_t> words(bytes.size());
    result = m_sensor.readBus(m_deviceAddress, offset, words);
    std::transform(words.begin(), words.end(), bytes.begin(), [](uint32_t word) { return uint8_t(word); });
    return result;
}

int RawTransport::writeOnce(uint32_t offset, std::span<uint8_t const> bytes) const {
    std::vector<uint32_t> const words(bytes.begin(), bytes.end());
    int const result = m_sensor.writeBus(m_deviceAddress, offset, words);
    pauseFor(kWriteCycle);
    return result;
}

int RawTransport::write(uint32_t offset, std::span<uint8_t const> bytes) const {
    int result = setWidths();
    // Pairs at even addresses never cross a page of the device.
    for (size_t i = 0; i < bytes.size() && result == 0;) {
        bool const isPair = (offset + i) % 2 == 0 && i + 1 < bytes.size();
        size_t const count = isPair ? 2 : 1;
        result = writeOnce(uint32_t(offset + i), bytes.subspan(i, count));
        i += count;
    }
    return result;
}

int BridgeTransport::set(char const* reg, uint32_t value) const {
    return m_sensor.writeRegister(reg, "", value);
}

int BridgeTransport::selectDevice() const {
    int const result = m_sensor.setMode(kModeBridge, 0);
    return result == 0 ? set("IO_EEPROM_I2C_ADDR", m_deviceAddress) : result;
}

int BridgeTransport::runCommand(uint32_t command) const {
    int const result = set("IO_EEPROM_COMMAND", command);
    if (result != 0)
        return result;
    uint32_t status = kStatusBusy;
    for (int poll = 0; poll < kMostPolls && (status & kStatusBusy); ++poll) {
        pauseFor(kPollInterval);
        status = m_sensor.readRegister("IO_EEPROM_STATUS", "");
    }
    bool const done = !(status & kStatusBusy) && (status & kStatusAcknowledged);
    return done ? 0 : kTransferFailed;
}

int BridgeTransport::read(uint32_t offset, std::span<uint8_t> bytes) const {
    int result = selectDevice();
    for (size_t i = 0; i < bytes.size() && result == 0; i += 2) {
        bool const two = i + 1 < bytes.size();
        result = set("IO_EEPROM_ADDR", uint32_t(offset + i));
        if (result == 0)
            result = runCommand(kCommandRead | (two ? kCommandTwoBytes : 0));
        if (result != 0)
            break;
        uint32_t const data = m_sensor.readRegister("IO_EEPROM_DATA", "");
        bytes[i] = uint8_t(two ? data >> 8 : data);
        if (two)
            bytes[i + 1] = uint8_t(data);
    }
    return result;
}

int BridgeTransport::write(uint32_t offset, std::span<uint8_t const> bytes) const {
    int result = selectDevice();
    for (size_t i = 0; i < bytes.size() && result == 0; i += 2) {
        bool const two = i + 1 < bytes.size();
        // Of a pair only the second byte travels: the mask clears the first. Deliberately not repaired: it
        // is the word that these bridges have always been sent. A verification reports what got lost.
        uint32_t const data = two ? ((uint32_t(bytes[i]) << 8) & 0xFF) | bytes[i + 1] : bytes[i];
        result = set("IO_EEPROM_ADDR", uint32_t(offset + i));
        if (result == 0)
            result = set("IO_EEPROM_DATA", data);
        if (result == 0)
            result = runCommand(kCommandWrite | (two ? kCommandTwoBytes : 0));
    }
    return result;
}

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

} // namespace

std::unique_ptr<EepromTransport> chooseTransport(HeadboardEeprom const& eeprom, Sensor const& sensor) {
    if (!sensor)
        return nullptr;
    uint32_t const deviceAddress = eeprom.deviceAddress;
    uint32_t const addressBits = eeprom.addressBits;
    if (!eeprom.bridgeOnly)
        return std::make_unique<RawTransport>(sensor, deviceAddress, addressBits);
    if (sensor.existsRegister("IO_EEPROM_I2C_ADDR"))
        return std::make_unique<BridgeTransport>(sensor, deviceAddress);
    if (sensor.existsRegister("DMA_CTRL"))
        return std::make_unique<BusDescriptionTransport>(sensor, deviceAddress, addressBits);
    return nullptr;
}

} // namespace kestra
