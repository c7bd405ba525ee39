#pragma once

#include "simulator/camera/camera_clock.h"
#include "simulator/camera/device_fault.h"
#include "simulator/camera/eeprom_contents.h"

#include <cstdint>
#include <span>

namespace simulator {
inline constexpr uint32_t kEepromPageSize = 32; ///< bytes

/// How many of `count` bytes from an address on lie in the address's page.
[[nodiscard]] size_t countInPage(uint32_t address, size_t count);

/// What whoever addresses the device gets to see.
enum class BusAnswer {
    Acknowledged,
    NotAcknowledged,
    Busy,           ///< not acknowledged, and it never will be while this lasts
    TransportFailed ///< the transfer did not even reach the device
};

/// A serial EEPROM: 8192 bytes behind 16-bit addresses whose upper bits it ignores, in pages of 32 bytes. A
/// read goes on over the end at address 0; a write goes on over the end of its page at the page's first
/// byte. After a write the device stores for 20 ms and acknowledges nothing meanwhile. A transfer with a
/// fault moves what it moved before the fault.
class EepromDevice {
public:
    /// Borrows the clock.
    EepromDevice(EepromContents const& contents, CameraClock const& clock);

    [[nodiscard]] BusAnswer read(uint32_t address, std::span<uint8_t> bytes);
    [[nodiscard]] BusAnswer write(uint32_t address, std::span<uint8_t const> bytes);

    /// Until then the device stores what was written.
    [[nodiscard]] CameraClock::Duration readyAt() const { return m_readyAt; }
    /// Transfers addressed to the device so far.
    [[nodiscard]] uint64_t operations() const { return m_operations; }
    /// Bytes stored so far.
    [[nodiscard]] uint64_t bytesWritten() const { return m_bytesWritten; }

    /// Replaces whatever was planned before.
    void plan(FaultPlan const& faults) { m_faults = faults; }
    /// What it holds, past the bus.
    [[nodiscard]] EepromContents const& contents() const { return m_contents; }
    [[nodiscard]] EepromContents& contents() { return m_contents; }

private:
    /// Counts the operation; `fault` is left for the transfer itself.
    [[nodiscard]] BusAnswer select(DeviceFault& fault);
    [[nodiscard]] uint8_t flipped(DeviceFault fault, size_t index, size_t count, uint8_t byte) const;

    EepromContents m_contents;
    CameraClock const* m_clock;
    CameraClock::Duration m_readyAt{};
    FaultPlan m_faults;
    uint64_t m_operations = 0;
    uint64_t m_bytesWritten = 0;
};
} // namespace simulator
