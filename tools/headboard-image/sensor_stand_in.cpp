#include "tools/headboard-image/sensor_stand_in.h"

#include "common/libraries.h"

namespace headboard_image {

SensorStandIn::SensorStandIn(Addressing addressing) {
    m_description.recordSize = sizeof(m_description);
    m_description.registerAddressWidth = addressBits(addressing);
    m_description.registerDataWidth = 16;
    m_description.name = "";

    Veyra2 library;
    library.vy_SensorInfo = [](vy_Camera* camera) -> vy_SensorDescription const* {
        return &of(camera).m_description;
    };
    library.vy_FindRegisterAddr = [](vy_Camera* camera, uint32_t address, uint32_t addressSpace,
                                     uint32_t selector) -> vy_RegisterDescription const* {
        constexpr uint32_t kSensorRegisters = 0;
        if (addressSpace == kSensorRegisters)
            of(camera).m_lookedUp.push_back({selector, address});
        return nullptr;
    };
    installVeyra2(library);
}

} // namespace headboard_image
