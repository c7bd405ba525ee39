#include "simulator/camera/eeprom_device.h"

#include <algorithm>
#include <chrono>

namespace simulator {
namespace {
constexpr std::chrono::milliseconds kWriteCycle{20};
} // namespace

size_t countInPage(uint32_t address, size_t count) {
    return std::min<size_t>(count, kEepromPageSize - address % kEepromPageSize);
}

EepromDevice::EepromDevice(EepromContents const& contents, CameraClock const& clock)
    : m_contents(contents), m_clock(&clock) {}

BusAnswer EepromDevice::select(DeviceFault& fault) {
    ++m_operations;
    fault = m_faults.beginOperation();
    if (fault == DeviceFault::TransportFailed)
        return BusAnswer::TransportFailed;
    if (fault == DeviceFault::BusyForEver)
        return BusAnswer::Busy;
    bool const answers =
        fault != DeviceFault::NoAcknowledge && fault != DeviceFault::PowerCut && m_clock->now() >= m_readyAt;
    return answers ? BusAnswer::Acknowledged : BusAnswer::NotAcknowledged;
}

// Which bit it is changes from operation to operation, so that each byte and bit gets its turn.
uint8_t EepromDevice::flipped(DeviceFault fault, size_t index, size_t count, uint8_t byte) const {
    bool const strikes = fault == DeviceFault::FlippedBit && index == m_operations / 8 % count;
    return strikes ? uint8_t(byte ^ (1U << m_operations % 8)) : byte;
}

BusAnswer EepromDevice::read(uint32_t address, std::span<uint8_t> bytes) {
    DeviceFault fault = DeviceFault::None;
    BusAnswer const answer = select(fault);
    if (answer != BusAnswer::Acknowledged)
        return answer;
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = flipped(fault, i, bytes.size(), m_contents[(address + i) % kEepromSize]);
    return answer;
}

BusAnswer EepromDevice::write(uint32_t address, std::span<uint8_t const> bytes) {
    DeviceFault fault = DeviceFault::None;
    BusAnswer const answer = select(fault);
    if (answer != BusAnswer::Acknowledged)
        return answer;
    size_t const page = address % kEepromSize / kEepromPageSize * kEepromPageSize;
    bool const isIgnored = fault == DeviceFault::IgnoredWrite;
    for (size_t i = 0; i < bytes.size() && !isIgnored; ++i) {
        if (!m_faults.beginByte())
            return BusAnswer::NotAcknowledged;
        m_contents[page + (address + i) % kEepromPageSize] = flipped(fault, i, bytes.size(), bytes[i]);
        ++m_bytesWritten;
    }
    m_readyAt = m_clock->now() + kWriteCycle;
    return answer;
}
} // namespace simulator
