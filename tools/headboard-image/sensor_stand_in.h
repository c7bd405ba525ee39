#pragma once

#include "common/veyra2.h"
#include "tools/headboard-image/addressing.h"

#include <vector>

namespace headboard_image {

/// Stands in for the camera during an import: a sensor that has a description and no register. From the first
/// one on it takes the place of the sensor-access library.
class SensorStandIn {
public:
    struct Register {
        uint32_t id = 0;
        uint32_t address = 0;

        friend bool operator==(Register const&, Register const&) = default;
    };

    explicit SensorStandIn(Addressing addressing);
    SensorStandIn(SensorStandIn const&) = delete;
    SensorStandIn& operator=(SensorStandIn const&) = delete;

    /// For a record store; valid while this lives.
    [[nodiscard]] vy_Camera* camera() { return reinterpret_cast<vy_Camera*>(this); }

    /// The sensor registers that were looked up, in their order. A section's import looks up every one.
    [[nodiscard]] std::vector<Register> const& lookedUp() const { return m_lookedUp; }

private:
    static SensorStandIn& of(vy_Camera* camera) { return *reinterpret_cast<SensorStandIn*>(camera); }

    vy_SensorDescription m_description{};
    std::vector<Register> m_lookedUp;
};

} // namespace headboard_image
