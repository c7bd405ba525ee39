#include "simulator/host/session/sensor_registers.h"

#include "simulator/boundary/boundary.h"

#include <bit>
#include <utility>

namespace pictara {
namespace {
constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeDataBits = 2;

constexpr int kNoRegister = -1; // of the host's own
} // namespace

SensorRegisters::SensorRegisters(vy_Camera* camera, std::function<void()> changed)
    : m_camera(camera), m_changed(std::move(changed)) {}

// Whoever is told of the write is not the host any more.
template <typename Write>
bool SensorRegisters::written(Write write) {
    {
        HostAtWork const own;
        if (write() != 0)
            return false;
    }
    if (m_depth > 0)
        m_pending = true;
    else
        m_changed();
    return true;
}

uint32_t SensorRegisters::read(char const* reg, char const* bitfield) const {
    HostAtWork const own;
    uint32_t value = 0;
    return vy_ReadSensorRegStr(m_camera, reg, bitfield, &value) == 0 ? value : 0;
}

bool SensorRegisters::write(char const* reg, char const* bitfield, uint32_t value) {
    return written([&] { return vy_WriteSensorRegStr(m_camera, reg, bitfield, value); });
}

bool SensorRegisters::writeAt(uint32_t addressSpace, uint32_t id, uint32_t address, uint32_t value) {
    return written([&] {
        vy_RegisterDescription const* const reg = vy_FindRegisterAddr(m_camera, address, addressSpace, id);
        return reg ? vy_WriteSensorReg(m_camera, reg, value) : kNoRegister;
    });
}

bool SensorRegisters::writeBitsAt(uint32_t id, uint32_t address, uint32_t mask, uint32_t value) {
    return written([&] {
        vy_RegisterDescription const* const reg = vy_FindRegisterAddr(m_camera, address, 0, id);
        uint32_t present = 0;
        if (!reg || mask == 0 || vy_ReadSensorReg(m_camera, reg, &present) != 0)
            return kNoRegister;
        uint32_t const bits = (value << std::countr_zero(mask)) & mask;
        return vy_WriteSensorReg(m_camera, reg, (present & ~mask) | bits);
    });
}

uint32_t SensorRegisters::readBusByte(uint32_t device, uint32_t address, BusWidths widths) const {
    HostAtWork const own;
    uint32_t word = 0;
    bool const isRead = setWidths(widths) && vy_readRegisters(m_camera, device, address, 1, &word) == 0;
    return isRead ? word & 0xFF : 0;
}

bool SensorRegisters::writeBusByte(uint32_t device, uint32_t address, uint32_t value, BusWidths widths) {
    HostAtWork const own;
    uint32_t const word = value & 0xFF;
    return setWidths(widths) && vy_writeRegisters(m_camera, device, address, 1, &word) == 0;
}

// The library keeps them, so whoever transferred before may have left others.
bool SensorRegisters::setWidths(BusWidths widths) const {
    return vy_setMode(m_camera, kModeAddressBits, widths.address) == 0 &&
           vy_setMode(m_camera, kModeDataBits, widths.data) == 0;
}

void SensorRegisters::beginChanges() { ++m_depth; }

void SensorRegisters::endChanges() {
    if (m_depth == 0 || --m_depth > 0)
        return;
    if (std::exchange(m_pending, false))
        m_changed();
}
} // namespace pictara
