#include "common/sensor.h"

#include "common/libraries.h"

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
