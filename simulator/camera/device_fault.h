#pragma once

#include <QStringList>
#include <cstdint>
#include <optional>

namespace simulator {
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

/// The names of the faults on a command line, "none" among them.
[[nodiscard]] QStringList deviceFaultNames();
/// Empty for a name that is none of them.
[[nodiscard]] std::optional<DeviceFault> deviceFaultByName(QString const& name);

/// When a fault strikes. Operations are transfers addressed to the device; they and the stored bytes are
/// counted from the making of the plan.
class FaultPlan {
public:
    FaultPlan() = default;
    /// The fault strikes operation `n`, the first one being 1 (0 means the same); `forEver`: and all later
    /// ones. The power is cut as soon as `n` bytes are stored: what is left of that transfer is lost or, when
    /// it was just over, the next one; then it returns unless the cut is for ever.
    FaultPlan(DeviceFault fault, uint64_t n, bool forEver);

    /// Counts an operation and tells what strikes it.
    [[nodiscard]] DeviceFault beginOperation();
    /// Counts a byte that is to be stored; false when there is no power left to store it.
    [[nodiscard]] bool beginByte();

private:
    [[nodiscard]] bool powerFails();

    DeviceFault m_fault = DeviceFault::None;
    uint64_t m_n = 0;
    bool m_forEver = false;
    bool m_isOver = false; ///< a power cut that was not for ever
    uint64_t m_operations = 0;
    uint64_t m_bytes = 0;
};
} // namespace simulator
