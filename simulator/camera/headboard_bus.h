#pragma once

#include "simulator/camera/camera_clock.h"
#include "simulator/camera/eeprom_device.h"
#include "simulator/camera/profile.h"

#include "published/veyra2.h"

#include <cstdint>
#include <optional>

namespace simulator {
/// The serial bus of the headboard with its EEPROM, and the ways from the library to it. An EEPROM answers
/// on the one way that its profile wires; on the others nothing acknowledges.
class HeadboardBus {
public:
    explicit HeadboardBus(Profile const& profile);
    // The device borrows the clock.
    HeadboardBus(HeadboardBus const&) = delete;
    HeadboardBus& operator=(HeadboardBus const&) = delete;

    /// Modes 1 and 2 set the bits of an address and of a word in raw transfers; 3 is the bridge's and needs
    /// nothing here. The widths come up as the sensor's own.
    [[nodiscard]] int setMode(uint32_t mode, uint32_t value);
    /// Raw transfers, answered as by the library's functions. A width or length that is none of the
    /// device's is a bad argument.
    [[nodiscard]] int readRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t> words);
    [[nodiscard]] int writeRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words);
    /// One location of one or two bytes, big byte first, behind a transient description. The sensor's bus
    /// master does the transfer, bytes in different pages apart from each other; after each write it asks the
    /// device until that has stored the bytes.
    [[nodiscard]] int readDescribed(vy_RegisterDescription const& location, uint32_t& value);
    [[nodiscard]] int writeDescribed(vy_RegisterDescription const& location, uint32_t value);

    /// The device that the bridge reaches under a bus address; null when none is wired there.
    [[nodiscard]] EepromDevice* behindBridge(uint32_t busAddress);

    [[nodiscard]] CameraClock& clock() { return m_clock; }
    /// Null without an EEPROM, whatever its wiring.
    [[nodiscard]] EepromDevice* device() { return m_device ? &*m_device : nullptr; }

private:
    [[nodiscard]] EepromDevice* find(EepromWiring wiring, uint32_t busAddress);
    [[nodiscard]] bool fitsRaw(uint32_t start, size_t count) const;

    CameraClock m_clock;
    EepromSection m_section;
    std::optional<EepromDevice> m_device;
    uint32_t m_addressBits;
    uint32_t m_wordBits;
};
} // namespace simulator
