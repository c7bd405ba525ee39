#pragma once

#include "simulator/camera/profile.h"
#include "simulator/camera/register_map.h"

#include "common/veyra2.h"

#include <QByteArray>

/// What the library's functions know of an open camera: its registers and its description. Nothing of the
/// scene, the lens or the frames is reachable from here.
struct vy_Camera {
    explicit vy_Camera(simulator::Profile const& profile);
    ~vy_Camera();
    vy_Camera(vy_Camera const&) = delete;
    vy_Camera& operator=(vy_Camera const&) = delete;

    simulator::RegisterMap registers;
    bool systemOnChip;
    vy_SensorDescription description{};

    /// Null for null and for handles of cameras that are closed, so that no function follows a stale one.
    [[nodiscard]] static vy_Camera* opened(vy_Camera* camera);

private:
    QByteArray m_name;
    QByteArray m_sensorData;
};
