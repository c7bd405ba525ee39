#pragma once

#include "common/veyra2.h"

#include <QByteArray>
#include <optional>

/// What the sensor-access library says of the open sensor, copied so that it outlives the next library call.
struct SensorInfo {
    uint32_t sensorKind = 0;
    uint32_t variant = 0;
    uint32_t registerAddressWidth = 0; ///< bits
    uint32_t registerDataWidth = 0;    ///< bits
    bool hasPageSelect = false;
    uint32_t secondaryMaps = 0; ///< bit k: the secondary register map of address-space kind k is present
    uint32_t imageWidth = 0;    ///< pixels
    uint32_t imageHeight = 0;   ///< pixels
    QByteArray name;            ///< part name
    void const* sensorData = nullptr; ///< owned by the library
};

/// A camera as the sensor-access library reaches it. A value that borrows the host's handle; with a null
/// handle the library is never asked and everything is absent.
class Sensor {
public:
    explicit Sensor(vy_Camera* camera) : m_camera(camera) {}

    [[nodiscard]] bool existsBitfield(char const* reg, char const* bitfield) const;
    [[nodiscard]] bool isSystemOnChip() const;
    /// Empty when the camera has no sensor description.
    [[nodiscard]] std::optional<SensorInfo> info() const;

private:
    vy_Camera* m_camera;
};
