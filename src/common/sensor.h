#pragma once

#include "published/veyra2.h"

#include <QByteArray>
#include <optional>
#include <span>

namespace kestra {

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
/// handle the library is never asked, everything is absent and every transfer fails with `kNoCamera`.
///
/// Operations that answer int give the library's own result: 0 for success, 12 when the addressed device does
/// not answer, anything else for a failure. An empty bitfield name means the whole register.
class Sensor {
public:
    explicit Sensor(vy_Camera* camera) : m_camera(camera) {}

    explicit operator bool() const { return m_camera != nullptr; }

    static constexpr int kNoCamera = -1;

    [[nodiscard]] bool existsRegister(char const* reg) const;
    [[nodiscard]] bool existsBitfield(char const* reg, char const* bitfield) const;
    [[nodiscard]] bool isSystemOnChip() const;
    /// Empty when the camera has no sensor description.
    [[nodiscard]] std::optional<SensorInfo> info() const;

    /// Descriptions are the library's; null when the sensor's map lacks them.
    [[nodiscard]] vy_RegisterDescription const* findRegister(char const* reg) const;
    [[nodiscard]] vy_BitfieldDescription const* findBitfield(char const* reg, char const* bitfield) const;
    [[nodiscard]] vy_RegisterDescription const* findRegisterAt(uint32_t address, uint32_t addressSpace,
                                                               uint32_t id) const;
    /// Size of a register's data in bytes.
    [[nodiscard]] uint32_t dataSize(vy_RegisterDescription const& reg) const;

    /// By name. The library stores what it read whatever it reports; where it stores nothing, the value is 0.
    [[nodiscard]] uint32_t readRegister(char const* reg, char const* bitfield) const;
    [[nodiscard]] int writeRegister(char const* reg, char const* bitfield, uint32_t value) const;
    /// By description, also by a transient one.
    [[nodiscard]] int readRegister(vy_RegisterDescription const& reg, uint32_t& value) const;
    [[nodiscard]] int writeRegister(vy_RegisterDescription const& reg, uint32_t value) const;
    /// Raw transfers on the serial bus: one word a byte, from `start` on.
    [[nodiscard]] int readBus(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) const;
    [[nodiscard]] int writeBus(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) const;
    /// Switches the transport into a mode.
    [[nodiscard]] int setMode(uint32_t mode, uint32_t value) const;
    /// Makes the next register reads go to the sensor.
    void invalidateCache() const;
    /// Stops the transport and closes all cameras; only for a handle that the host did not lend.
    void close() const;

private:
    vy_Camera* m_camera;
};

} // namespace kestra
