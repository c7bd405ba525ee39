#pragma once

#include "common/libraries.h"

#include <QByteArray>
#include <optional>
#include <span>

namespace kestra {
/// What the sensor-access library says of the open sensor, copied so that it outlives the next library call.
struct SensorInfo {
    uint32_t sensorKind{};
    uint32_t variant{};
    uint32_t registerAddressWidth{}; ///< bits
    uint32_t registerDataWidth{};    ///< bits
    bool hasPageSelect{};
    uint32_t secondaryMaps{}; ///< bit k: the secondary register map of address-space kind k is present
    uint32_t imageWidth{};    ///< pixels
    uint32_t imageHeight{};   ///< pixels
    QByteArray name;          ///< part name
    void const* sensorData = nullptr; ///< owned by the library
};

/// A camera as the sensor-access library reaches it. A value that borrows the host's handle; with a null
/// handle the library is never asked: everything is absent and every transfer fails with -1.
///
/// Operations that answer int give the library's own result: 0 for success, 12 when the addressed device does
/// not answer, anything else for a failure. An empty bitfield name means the whole register.
class Sensor {
public:
    explicit Sensor(vy_Camera* camera) : m_camera(camera) {}

    explicit operator bool() const { return m_camera != nullptr; }

    [[nodiscard]] bool existsRegister(char const* reg) const {
        return library().vy_ExistsRegister(m_camera, reg) != 0;
    }
    [[nodiscard]] bool existsBitfield(char const* reg, char const* bitfield) const {
        return library().vy_ExistsBitfield(m_camera, reg, bitfield) != 0;
    }
    [[nodiscard]] bool isSystemOnChip() const { return library().vy_IsSOC(m_camera) != 0; }
    /// Empty when the camera has no sensor description.
    [[nodiscard]] std::optional<SensorInfo> info() const {
        vy_SensorDescription const* description = library().vy_SensorInfo(m_camera);
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

    /// Descriptions are the library's; null when the sensor's map lacks them.
    [[nodiscard]] vy_RegisterDescription const* findRegister(char const* reg) const {
        return library().vy_FindRegister(m_camera, reg);
    }
    [[nodiscard]] vy_BitfieldDescription const* findBitfield(char const* reg, char const* bitfield) const {
        return library().vy_FindBitfield(m_camera, reg, bitfield);
    }
    [[nodiscard]] vy_RegisterDescription const* findRegisterAt(uint32_t address, uint32_t addressSpace,
                                                               uint32_t id) const {
        return library().vy_FindRegisterAddr(m_camera, address, addressSpace, id);
    }
    /// Size of a register's data in bytes.
    [[nodiscard]] uint32_t dataSize(vy_RegisterDescription const& reg) const {
        return library().vy_dataSize(reg.dataType);
    }

    /// By name. The library stores what it read whatever it reports; where it stores nothing, the value is 0.
    [[nodiscard]] uint32_t readRegister(char const* reg, char const* bitfield) const {
        uint32_t value = 0;
        (void)library().vy_ReadSensorRegStr(m_camera, reg, bitfield, &value);
        return value;
    }
    [[nodiscard]] int writeRegister(char const* reg, char const* bitfield, uint32_t value) const {
        return library().vy_WriteSensorRegStr(m_camera, reg, bitfield, value);
    }
    /// By description, also by a transient one.
    [[nodiscard]] int readRegister(vy_RegisterDescription const& reg, uint32_t& value) const {
        return library().vy_ReadSensorReg(m_camera, &reg, &value);
    }
    [[nodiscard]] int writeRegister(vy_RegisterDescription const& reg, uint32_t value) const {
        return library().vy_WriteSensorReg(m_camera, &reg, value);
    }
    /// Raw transfers on the serial bus: one word a byte, from `start` on.
    [[nodiscard]] int readBus(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) const {
        return library().vy_readRegisters(m_camera, busAddress, start, uint32_t(words.size()), words.data());
    }
    [[nodiscard]] int writeBus(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) const {
        return library().vy_writeRegisters(m_camera, busAddress, start, uint32_t(words.size()), words.data());
    }
    /// Switches the transport into a mode.
    [[nodiscard]] int setMode(uint32_t mode, uint32_t value) const {
        return library().vy_setMode(m_camera, mode, value);
    }
    /// Makes the next register reads go to the sensor.
    void invalidateCache() const { library().vy_InvalidateRegCache(m_camera); }
    /// Stops the transport and closes all cameras; only for a handle that the host did not lend.
    void close() const {
        Veyra2 const& used = library();
        (void)used.vy_stopTransport(m_camera);
        used.vy_CloseCameras();
    }

private:
    [[nodiscard]] Veyra2 const& library() const { return m_camera ? veyra2() : absentVeyra2(); }

    vy_Camera* m_camera;
};
} // namespace kestra
