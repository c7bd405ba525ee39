#include "simulator/camera/camera_handle.h"

#include <algorithm>
#include <vector>

namespace {
// Cameras are opened and used on one thread, the host's.
std::vector<vy_Camera*>& openCameras() {
    static std::vector<vy_Camera*> cameras;
    return cameras;
}
} // namespace

vy_Camera::vy_Camera(simulator::Profile const& profile)
    : registers(profile.registers), bus(profile), bridge(registers, bus),
      systemOnChip(profile.description.systemOnChip), m_name(profile.description.sensorName),
      m_sensorData(profile.layoutBlock) {
    description = {.recordSize = sizeof description,
                   .sensorKind = profile.description.sensorKind,
                   .variant = profile.description.variant,
                   .registerAddressWidth = profile.registerAddressWidth,
                   .registerDataWidth = profile.registerDataWidth,
                   .hasPageSelect = profile.hasPageSelect ? 1U : 0U,
                   .secondaryMaps = profile.secondaryMaps,
                   .imageWidth = profile.array.width,
                   .imageHeight = profile.array.height,
                   .reserved = 0,
                   .name = m_name.constData(),
                   .sensorData = m_sensorData.constData()};
    openCameras().push_back(this);
}

vy_Camera::~vy_Camera() { std::erase(openCameras(), this); }

uint32_t vy_Camera::read(simulator::RegisterMap::Register& reg, uint32_t mask) {
    bridge.refresh();
    return simulator::RegisterMap::read(reg, mask);
}

int vy_Camera::write(simulator::RegisterMap::Register& reg, uint32_t value, uint32_t mask) {
    bridge.refresh();
    registers.write(reg, value, mask);
    return bridge.written(reg);
}

vy_Camera* vy_Camera::opened(vy_Camera* camera) {
    auto const& cameras = openCameras();
    return std::find(cameras.begin(), cameras.end(), camera) == cameras.end() ? nullptr : camera;
}
