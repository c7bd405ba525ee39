#pragma once

#include "simulator/camera/simulated_camera.h"

#include <QByteArray>
#include <QHash>
#include <cstdint>

namespace pictara {
/// The host's named integer variables, which steer its colour pipeline and exposure loop. A name that nobody
/// knows reads 0 and keeps what is set, as the host's own menus add variables freely.
class StateVariables {
public:
    explicit StateVariables(simulator::CameraDescription const& camera);

    [[nodiscard]] int32_t read(QByteArray const& name) const {
        return m_ofCamera.value(name, m_values.value(name));
    }
    /// What the camera dictates ("X Offset", "Y Offset", "Sensor Orientation") cannot be set.
    void set(QByteArray const& name, int32_t value);

private:
    QHash<QByteArray, int32_t> m_values, m_ofCamera;
};
} // namespace pictara
