#include "tools/headboard-image/sensor_stand_in.h"

#include "common/libraries.h"

using namespace kestra;

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
    installVeyra2(library);
}
} // namespace headboard_image
