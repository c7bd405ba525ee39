#pragma once

#include "headboard/register_record.h"
#include "headboard/register_set.h"

#include <QString>
#include <memory>
#include <set>

namespace simulator {
class SimulatedCamera;
}

namespace headboard_image {
/// The sensor of a profile, of whose shading registers only those are there that have been set: a record that
/// is built from it holds these and what the sensor needs besides, and no value that nobody told. While one
/// lives, it takes the place of the sensor-access library.
class ProfileSensor {
public:
    /// Null, with the reason in `error`, when there is no such profile.
    [[nodiscard]] static std::unique_ptr<ProfileSensor> open(QString const& profile, std::string* error);
    ~ProfileSensor();
    ProfileSensor(ProfileSensor const&) = delete;
    ProfileSensor& operator=(ProfileSensor const&) = delete;

    /// For a record store; valid while this lives.
    [[nodiscard]] vy_Camera* camera() const;
    [[nodiscard]] kestra::SensorModel model() const;

    /// Sets a register, or a bitfield of it. False, with the reason in `error`, when the sensor has none
    /// there or it cannot hold the value.
    [[nodiscard]] bool set(kestra::RegisterEntry const& entry, std::string* error);

private:
    explicit ProfileSensor(std::unique_ptr<simulator::SimulatedCamera> camera);

    std::unique_ptr<simulator::SimulatedCamera> m_camera;
    std::set<std::string> m_hidden; ///< registers
};
} // namespace headboard_image
