#pragma once

#include "published/veyra2.h"
#include "tools/headboard-image/addressing.h"

namespace headboard_image {
/// Stands in for the camera during an import: a sensor that has a description and no register. From the first
/// one on it takes the place of the sensor-access library.
class SensorStandIn {
public:
    explicit SensorStandIn(Addressing addressing);
    SensorStandIn(SensorStandIn const&) = delete;
    SensorStandIn& operator=(SensorStandIn const&) = delete;

    /// For a record store; valid while this lives.
    [[nodiscard]] vy_Camera* camera() { return reinterpret_cast<vy_Camera*>(this); }

private:
    static SensorStandIn& of(vy_Camera* camera) { return *reinterpret_cast<SensorStandIn*>(camera); }

    vy_SensorDescription m_description{};
};
} // namespace headboard_image
