#pragma once

#include "common/libraries.h"

namespace kestra {
/// The functions of the sensor-access library that this test program is linked with, for `installVeyra2`.
[[nodiscard]] inline Veyra2 linkedLibrary() {
    return {vy_ExistsRegister,
            vy_ExistsBitfield,
            vy_FindRegister,
            vy_FindBitfield,
            vy_FindRegisterAddr,
            vy_dataSize,
            vy_ReadSensorRegStr,
            vy_WriteSensorRegStr,
            vy_ReadSensorReg,
            vy_WriteSensorReg,
            vy_readRegisters,
            vy_writeRegisters,
            vy_setMode,
            vy_InvalidateRegCache,
            vy_IsSOC,
            vy_Home,
            vy_stopTransport,
            vy_CloseCameras,
            vy_SensorInfo};
}
} // namespace kestra
