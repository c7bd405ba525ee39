#include "simulator/camera/device_fault.h"

#include <algorithm>

namespace simulator {
namespace {
struct FaultName {
    char const* name;
    DeviceFault fault;
};
constexpr FaultName kFaultNames[] = {
    {"none", DeviceFault::None},
    {"no-acknowledge", DeviceFault::NoAcknowledge},
    {"busy-for-ever", DeviceFault::BusyForEver},
    {"error-12", DeviceFault::TransportFailed},
    {"flipped-bit", DeviceFault::FlippedBit},
    {"ignored-write", DeviceFault::IgnoredWrite},
    {"power-cut", DeviceFault::PowerCut},
};
} // namespace

QStringList deviceFaultNames() {
    QStringList names;
    for (FaultName const& row : kFaultNames)
        names.append(QLatin1String(row.name));
    return names;
}

std::optional<DeviceFault> deviceFaultByName(QString const& name) {
    for (FaultName const& row : kFaultNames)
        if (name == QLatin1String(row.name))
            return row.fault;
    return std::nullopt;
}

FaultPlan::FaultPlan(DeviceFault fault, uint64_t n, bool forEver)
    : m_fault(fault), m_n(fault == DeviceFault::PowerCut ? n : std::max<uint64_t>(n, 1)), m_forEver(forEver) {
}

DeviceFault FaultPlan::beginOperation() {
    ++m_operations;
    if (m_fault == DeviceFault::PowerCut)
        return powerFails() ? DeviceFault::PowerCut : DeviceFault::None;
    bool const strikes = m_operations == m_n || (m_forEver && m_operations > m_n);
    return strikes ? m_fault : DeviceFault::None;
}

bool FaultPlan::beginByte() {
    if (powerFails())
        return false;
    ++m_bytes;
    return true;
}

bool FaultPlan::powerFails() {
    if (m_fault != DeviceFault::PowerCut || m_bytes < m_n || m_isOver)
        return false;
    m_isOver = !m_forEver;
    return true;
}
} // namespace simulator
