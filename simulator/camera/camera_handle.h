#pragma once

#include "simulator/camera/headboard_bus.h"
#include "simulator/camera/profile.h"
#include "simulator/camera/register_map.h"

#include "published/veyra2.h"

#include <QByteArray>

/// What the library's functions know of an open camera: its registers, the bus of its
/// headboard and its description. Nothing of the
/// scene, the lens or the frames is reachable from here.
struct vy_Camera {
    explicit vy_Camera(simulator::Profile const& profile);
    ~vy_Camera();
    vy_Camera(vy_Camera const&) = delete;
    vy_Camera& operator=(vy_Camera const&) = delete;

    simulator::RegisterMap registers;
    simulator::HeadboardBus bus;
    simulator::EepromBridge bridge;
    bool systemOnChip;
    vy_SensorDescription description{};

    /// The masked bits of a register, as the library's functions answer and take them.
    [[nodiscard]] uint32_t read(simulator::RegisterMap::Register& reg, uint32_t mask = 0xFFFFFFFF);
    [[nodiscard]] int write(simulator::RegisterMap::Register& reg, uint32_t value,
                            uint32_t mask = 0xFFFFFFFF);

    /// Null for null and for handles of cameras that are closed, so that no function follows a stale one.
    [[nodiscard]] static vy_Camera* opened(vy_Camera* camera);

private:
    QByteArray m_name;
    QByteArray m_sensorData;
};
