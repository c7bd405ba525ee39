#include "tools/headboard-image/profile_sensor.h"

#include "common/libraries.h"
#include "headboard/register_names.h"
#include "simulator/camera/simulated_camera.h"
#include "tools/headboard-image/printed_text.h"

#include <bit>

using namespace kestra;

namespace headboard_image {
namespace {
std::set<std::string> const* hidden = nullptr;

int existsUnlessHidden(vy_Camera* camera, char const* reg) {
    return hidden && hidden->contains(reg) ? 0 : ::vy_ExistsRegister(camera, reg);
}

uint32_t lowestBits(uint32_t count) {
    constexpr uint32_t kAll = UINT32_MAX;
    return count < 32 ? ~(kAll << count) : kAll;
}
} // namespace

std::unique_ptr<ProfileSensor> ProfileSensor::open(QString const& profile, std::string* error) {
    QString why;
    auto camera = simulator::SimulatedCamera::open(profile, &why);
    if (camera)
        return std::unique_ptr<ProfileSensor>(new ProfileSensor(std::move(camera)));
    *error = why.toStdString();
    return nullptr;
}

ProfileSensor::ProfileSensor(std::unique_ptr<simulator::SimulatedCamera> camera)
    : m_camera(std::move(camera)), m_hidden(shadingRegisterNames().begin(), shadingRegisterNames().end()) {
    hidden = &m_hidden;
    installVeyra2({.vy_ExistsRegister = existsUnlessHidden,
                   .vy_ExistsBitfield = ::vy_ExistsBitfield,
                   .vy_FindRegister = ::vy_FindRegister,
                   .vy_FindBitfield = ::vy_FindBitfield,
                   .vy_FindRegisterAddr = ::vy_FindRegisterAddr,
                   .vy_dataSize = ::vy_dataSize,
                   .vy_ReadSensorRegStr = ::vy_ReadSensorRegStr,
                   .vy_WriteSensorRegStr = ::vy_WriteSensorRegStr,
                   .vy_InvalidateRegCache = ::vy_InvalidateRegCache,
                   .vy_SensorInfo = ::vy_SensorInfo});
}

ProfileSensor::~ProfileSensor() {
    hidden = nullptr;
    installVeyra2({});
}

vy_Camera* ProfileSensor::camera() const { return m_camera->handle(); }

SensorModel ProfileSensor::model() const {
    return {m_camera->description().sensorKind, m_camera->description().variant};
}

bool ProfileSensor::set(RegisterEntry const& entry, std::string* error) {
    vy_RegisterDescription const* const found =
        ::vy_FindRegisterAddr(camera(), entry.address, entry.registerClass, entry.id);
    if (!found) {
        *error = "the sensor has no register there";
        return false;
    }
    vy_RegisterDescription const reg = *found;
    uint32_t const mask = entry.mask != 0 ? entry.mask : lowestBits(reg.dataWidth);
    uint64_t const value = uint64_t{entry.value} << std::countr_zero(mask);
    if ((value & ~uint64_t{mask}) != 0 || (mask & ~lowestBits(reg.dataWidth)) != 0) {
        *error = std::string(reg.name) + ", of " + std::to_string(reg.dataWidth) + " bits, has no room for " +
                 hexadecimal(entry.value, 4);
        return false;
    }
    uint32_t old = 0;
    (void)::vy_ReadSensorReg(camera(), &reg, &old);
    if (::vy_WriteSensorReg(camera(), &reg, (old & ~mask) | uint32_t(value)) != 0) {
        *error = "the sensor does not take it";
        return false;
    }
    m_hidden.erase(reg.name);
    return true;
}
} // namespace headboard_image
