#include "simulator/camera/eeprom_device.h"

#include <thread>

namespace simulator {
namespace {
constexpr std::chrono::milliseconds kWriteCycle{20};
constexpr uint8_t kErased = 0xFF;
constexpr std::array<uint8_t, 5> kHeader = {'V', 'Y', 'E', 'E', 1}; // the last is the format's version
} // namespace

CameraClock::Duration CameraClock::now() const {
    return m_isVirtual ? m_advanced : m_advanced + (std::chrono::steady_clock::now() - m_start);
}

void CameraClock::useVirtualTime() {
    m_advanced = now();
    m_isVirtual = true;
}

void CameraClock::wait(Duration time) {
    if (m_isVirtual)
        return advance(time);
    // A system's sleep may end early; who waited for the device must find it ready.
    for (Duration const end = now() + time; now() < end;)
        std::this_thread::sleep_for(std::chrono::ceil<std::chrono::milliseconds>(end - now()));
}

EepromContents blankContents() {
    EepromContents contents;
    contents.fill(kErased);
    return contents;
}

EepromContents formattedContents() {
    EepromContents contents = blankContents(); // an erased byte ends the chain
    std::copy(kHeader.begin(), kHeader.end(), contents.begin());
    return contents;
}

QStringList deviceFaultNames() {
    return {QStringLiteral("none"),     QStringLiteral("no-acknowledge"), QStringLiteral("busy-for-ever"),
            QStringLiteral("error-12"), QStringLiteral("flipped-bit"),    QStringLiteral("ignored-write"),
            QStringLiteral("power-cut")};
}

void EepromDevice::plan(FaultPlan const& faults) {
    constexpr uint64_t kNever = UINT64_MAX / 2;
    bool const isCut = faults.fault == DeviceFault::PowerCut;
    m_plan = faults;
    m_plan.n =
        (isCut ? m_bytesWritten : m_operations) + std::clamp<uint64_t>(faults.n, isCut ? 0 : 1, kNever);
}

// A cut that is not for ever is over as soon as it struck.
bool EepromDevice::powerFails() {
    if (m_plan.fault != DeviceFault::PowerCut || m_bytesWritten < m_plan.n)
        return false;
    if (!m_plan.forEver)
        m_plan = {};
    return true;
}

BusAnswer EepromDevice::select() {
    ++m_operations;
    DeviceFault const planned = m_plan.fault;
    bool const isTheOperation = m_operations == m_plan.n || (m_plan.forEver && m_operations > m_plan.n);
    bool const strikes = planned == DeviceFault::PowerCut ? powerFails() : isTheOperation;
    m_fault = strikes ? planned : DeviceFault::None;
    switch (m_fault) {
    case DeviceFault::TransportFailed:
        return BusAnswer::TransportFailed;
    case DeviceFault::BusyForEver:
        return BusAnswer::Busy;
    case DeviceFault::NoAcknowledge:
    case DeviceFault::PowerCut:
        return BusAnswer::NotAcknowledged;
    default:
        return m_clock->now() >= m_readyAt ? BusAnswer::Acknowledged : BusAnswer::NotAcknowledged;
    }
}

// Which bit it is changes from operation to operation, so that each byte and bit gets its turn.
uint8_t EepromDevice::flipped(size_t index, size_t count, uint8_t byte) const {
    bool const strikes = m_fault == DeviceFault::FlippedBit && index == m_operations / 8 % count;
    return strikes ? uint8_t(byte ^ (1U << m_operations % 8)) : byte;
}

BusAnswer EepromDevice::read(uint32_t address, std::span<uint8_t> bytes) {
    BusAnswer const answer = select();
    for (size_t i = 0; i < bytes.size() && answer == BusAnswer::Acknowledged; ++i)
        bytes[i] = flipped(i, bytes.size(), m_contents[(address + i) % kEepromSize]);
    return answer;
}

BusAnswer EepromDevice::write(uint32_t address, std::span<uint8_t const> bytes) {
    BusAnswer const answer = select();
    if (answer != BusAnswer::Acknowledged)
        return answer;
    size_t const page = address % kEepromSize / kEepromPageSize * kEepromPageSize;
    bool const isIgnored = m_fault == DeviceFault::IgnoredWrite;
    for (size_t i = 0; i < bytes.size() && !isIgnored; ++i) {
        if (powerFails())
            return BusAnswer::NotAcknowledged;
        m_contents[page + (address + i) % kEepromPageSize] = flipped(i, bytes.size(), bytes[i]);
        ++m_bytesWritten;
    }
    m_readyAt = m_clock->now() + kWriteCycle;
    return answer;
}
} // namespace simulator
