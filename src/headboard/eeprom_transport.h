#pragma once

#include "common/sensor.h"
#include "headboard/headboard_eeprom.h"

#include <memory>
#include <span>

/// One way to the bytes of the EEPROM. It holds what it needs by value and answers the library's result: 0,
/// 12 when the device does not answer, anything else for a failure. After a failure the range is undefined.
class EepromTransport {
public:
    virtual ~EepromTransport() = default;
    [[nodiscard]] virtual int read(uint32_t offset, std::span<uint8_t> bytes) const = 0;
    [[nodiscard]] virtual int write(uint32_t offset, std::span<uint8_t const> bytes) const = 0;
};

/// Serial transfers of the library, for all sensors that pass their bus through.
class RawTransport : public EepromTransport {
public:
    RawTransport(Sensor sensor, uint32_t deviceAddress, uint32_t addressBits)
        : m_sensor(sensor), m_deviceAddress(deviceAddress), m_addressBits(addressBits) {}
    [[nodiscard]] int read(uint32_t offset, std::span<uint8_t> bytes) const override;
    [[nodiscard]] int write(uint32_t offset, std::span<uint8_t const> bytes) const override;

private:
    [[nodiscard]] int setWidths() const;
    [[nodiscard]] int writeOnce(uint32_t offset, std::span<uint8_t const> bytes) const;

    Sensor m_sensor;
    uint32_t m_deviceAddress;
    uint32_t m_addressBits;
};

/// The sensor's own bus master, driven by its registers `IO_EEPROM_*`, two bytes at a time.
class BridgeTransport : public EepromTransport {
public:
    BridgeTransport(Sensor sensor, uint32_t deviceAddress)
        : m_sensor(sensor), m_deviceAddress(deviceAddress) {}
    [[nodiscard]] int read(uint32_t offset, std::span<uint8_t> bytes) const override;
    /// Of two bytes that go together, the bridge is handed the second one only and a zero before it.
    [[nodiscard]] int write(uint32_t offset, std::span<uint8_t const> bytes) const override;

private:
    [[nodiscard]] int selectDevice() const;
    [[nodiscard]] int set(char const* reg, uint32_t value) const;
    [[nodiscard]] int runCommand(uint32_t command) const;

    Sensor m_sensor;
    uint32_t m_deviceAddress;
};

/// The library's access by description, with a description made for each location, two bytes at a time.
class BusDescriptionTransport : public EepromTransport {
public:
    BusDescriptionTransport(Sensor sensor, uint32_t deviceAddress, uint32_t addressBits)
        : m_sensor(sensor), m_deviceAddress(deviceAddress), m_addressBits(addressBits) {}
    [[nodiscard]] int read(uint32_t offset, std::span<uint8_t> bytes) const override;
    [[nodiscard]] int write(uint32_t offset, std::span<uint8_t const> bytes) const override;

private:
    [[nodiscard]] vy_RegisterDescription describe(uint32_t address, uint32_t byteCount) const;

    Sensor m_sensor;
    uint32_t m_deviceAddress;
    uint32_t m_addressBits;
};

/// The way that the open sensor offers; null when there is none or no camera.
[[nodiscard]] std::unique_ptr<EepromTransport> chooseTransport(HeadboardEeprom const& eeprom);
