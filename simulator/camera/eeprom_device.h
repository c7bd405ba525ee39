#pragma once

#include <QStringList>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator {
/// The time that passes for the devices on the headboard. It follows the computer's steady clock until it is
/// made virtual; from then on it passes only when somebody says so.
class CameraClock {
public:
    using Duration = std::chrono::steady_clock::duration;

    /// Time since the camera was opened.
    [[nodiscard]] Duration now() const;
    /// Stops following the steady clock; what passed so far stays passed.
    void useVirtualTime();
    /// Lets time pass without anybody waiting for it. Ignores what is not above 0.
    void advance(Duration time) { m_advanced += std::max(time, Duration::zero()); }
    /// Returns when the time has passed: sleeps, or advances the virtual time.
    void wait(Duration time);

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    Duration m_advanced{};
    bool m_isVirtual = false;
};

inline constexpr size_t kEepromSize = 8192;     ///< bytes
inline constexpr uint32_t kEepromPageSize = 32; ///< bytes

using EepromContents = std::array<uint8_t, kEepromSize>;

/// As it leaves the maker of the chip: every byte 0xFF.
[[nodiscard]] EepromContents blankContents();
/// With a header and an empty chain of records.
[[nodiscard]] EepromContents formattedContents();

/// What can go wrong between the camera and its EEPROM.
enum class DeviceFault {
    None,
    NoAcknowledge,   ///< the device does not acknowledge the transfer
    BusyForEver,     ///< the device never gets ready for the transfer
    TransportFailed, ///< the transfer does not reach the device, and the library's own call tells it
    FlippedBit,      ///< one bit of the bytes read or written is wrong
    IgnoredWrite,    ///< a write is acknowledged and not stored; reads are as ever
    PowerCut         ///< the power fails after a number of stored bytes
};

/// The names of the faults on a command line, in their order.
[[nodiscard]] QStringList deviceFaultNames();

/// When a fault strikes: at the `n`th transfer from the planning on (0 means 1) and, if for ever, at all
/// later ones. The power is cut as soon as `n` bytes are stored: what is left of that transfer is lost or,
/// when it was just over, the next one; then it returns unless the cut is for ever.
struct FaultPlan {
    DeviceFault fault = DeviceFault::None;
    uint64_t n = 1;
    bool forEver = false;
};

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
    EepromDevice(EepromContents const& contents, CameraClock const& clock)
        : m_contents(contents), m_clock(&clock) {}

    [[nodiscard]] BusAnswer read(uint32_t address, std::span<uint8_t> bytes);
    [[nodiscard]] BusAnswer write(uint32_t address, std::span<uint8_t const> bytes);

    /// Until then the device stores what was written.
    [[nodiscard]] CameraClock::Duration readyAt() const { return m_readyAt; }
    /// Transfers addressed to the device so far.
    [[nodiscard]] uint64_t operations() const { return m_operations; }
    /// Bytes stored so far.
    [[nodiscard]] uint64_t bytesWritten() const { return m_bytesWritten; }

    /// Replaces whatever was planned before.
    void plan(FaultPlan const& faults);
    /// What it holds, past the bus.
    [[nodiscard]] EepromContents const& contents() const { return m_contents; }
    [[nodiscard]] EepromContents& contents() { return m_contents; }

private:
    [[nodiscard]] BusAnswer select();
    [[nodiscard]] bool powerFails();
    [[nodiscard]] uint8_t flipped(size_t index, size_t count, uint8_t byte) const;

    EepromContents m_contents;
    CameraClock const* m_clock;
    CameraClock::Duration m_readyAt{};
    uint64_t m_operations = 0;
    uint64_t m_bytesWritten = 0;
    FaultPlan m_plan;                        ///< counts operations and bytes as the device does
    DeviceFault m_fault = DeviceFault::None; ///< of the present transfer
};
} // namespace simulator
