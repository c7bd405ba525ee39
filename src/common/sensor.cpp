#include "common/sensor.h"

#include "common/libraries.h"

namespace kestra {

bool Sensor::existsRegister(char const* reg) const {
    return m_camera && veyra2().vy_ExistsRegister(m_camera, reg) != 0;
}

bool Sensor::existsBitfield(char const* reg, char const* bitfield) const {
    return m_camera && veyra2().vy_ExistsBitfield(m_camera, reg, bitfield) != 0;
}

bool Sensor::isSystemOnChip() const {
    return m_camera && veyra2().vy_IsSOC(m_camera) != 0;
}

std::optional<SensorInfo> Sensor::info() const {
    vy_SensorDescription const* description = m_camera ? veyra2().vy_SensorInfo(m_camera) : nullptr;
    if (!description)
        return std::nullopt;
    return SensorInfo{
        .sensorKind = description->sensorKind,
        .variant = description->variant,
        .registerAddressWidth = description->registerAddressWidth,
        .registerDataWidth = description->registerDataWidth,
        .hasPageSelect = description->hasPageSelect != 0,
        .secondaryMaps = description->secondaryMaps,
        .imageWidth = description->imageWidth,
        .imageHeight = description->imageHeight,
        .name = QByteArray(description->name), // null gives an empty name
        .sensorData = description->sensorData,
    };
}

vy_RegisterDescription const* Sensor::findRegister(char const* reg) const {
    return m_camera ? veyra2().vy_FindRegister(m_camera, reg) : nullptr;
}

vy_BitfieldDescription const* Sensor::findBitfield(char const* reg, char const* bitfield) const {
    return m_camera ? veyra2().vy_FindBitfield(m_camera, reg, bitfield) : nullptr;
}

vy_RegisterDescription const* Sensor::findRegisterAt(uint32_t address, uint32_t addressSpace,
                                                     uint32_t id) const {
    return m_camera ? veyra2().vy_FindRegisterAddr(m_camera, address, addressSpace, id) : nullptr;
}

uint32_t Sensor::dataSize(vy_RegisterDescription const& reg) const {
    return m_camera ? veyra2().vy_dataSize(reg.dataType) : 0;
}

uint32_t Sensor::readRegister(char const* reg, char const* bitfield) const {
    uint32_t value = 0;
    if (m_camera)
        (void)veyra2().vy_ReadSensorRegStr(m_camera, reg, bitfield, &value);
    return value;
}

int Sensor::writeRegister(char const* reg, char const* bitfield, uint32_t value) const {
    return m_camera ? veyra2().vy_WriteSensorRegStr(m_camera, reg, bitfield, value) : kNoCamera;
}

int Sensor::readRegister(vy_RegisterDescription const& reg, uint32_t& value) const {
    return m_camera ? veyra2().vy_ReadSensorReg(m_camera, &reg, &value) : kNoCamera;
}

int Sensor::writeRegister(vy_RegisterDescription const& reg, uint32_t value) const {
    return m_camera ? veyra2().vy_WriteSensorReg(m_camera, &reg, value) : kNoCamera;
}

int Sensor::readBus(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) const {
    return m_camera
               ? veyra2().vy_readRegisters(m_camera, busAddress, start, uint32_t(words.size()), words.data())
               : kNoCamera;
}

int Sensor::writeBus(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) const {
    return m_camera
               ? veyra2().vy_writeRegisters(m_camera, busAddress, start, uint32_t(words.size()), words.data())
               : kNoCamera;
}

int Sensor::setMode(uint32_t mode, uint32_t value) const {
    return m_camera ? veyra2().vy_setMode(m_camera, mode, value) : kNoCamera;
}

void Sensor::invalidateCache() const {
    if (m_camera)
        veyra2().vy_InvalidateRegCache(m_camera);
}

void Sensor::close() const {
    if (!m_camera)
        return;
    (void)veyra2().vy_stopTransport(m_camera);
    veyra2().vy_CloseCameras();
}

} // namespace kestra
