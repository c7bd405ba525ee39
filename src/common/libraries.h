#pragma once

#include "published/shadefit.h"
#include "published/veyra2.h"

namespace kestra {

/// The functions of the sensor-access library by their own names. No member is null once installed.
struct Veyra2 {
    decltype(&::vy_ExistsRegister) vy_ExistsRegister = nullptr;
    decltype(&::vy_ExistsBitfield) vy_ExistsBitfield = nullptr;
    decltype(&::vy_FindRegister) vy_FindRegister = nullptr;
    decltype(&::vy_FindBitfield) vy_FindBitfield = nullptr;
    decltype(&::vy_FindRegisterAddr) vy_FindRegisterAddr = nullptr;
    decltype(&::vy_dataSize) vy_dataSize = nullptr;
    decltype(&::vy_ReadSensorRegStr) vy_ReadSensorRegStr = nullptr;
    decltype(&::vy_WriteSensorRegStr) vy_WriteSensorRegStr = nullptr;
    decltype(&::vy_ReadSensorReg) vy_ReadSensorReg = nullptr;
    decltype(&::vy_WriteSensorReg) vy_WriteSensorReg = nullptr;
    decltype(&::vy_readRegisters) vy_readRegisters = nullptr;
    decltype(&::vy_writeRegisters) vy_writeRegisters = nullptr;
    decltype(&::vy_setMode) vy_setMode = nullptr;
    decltype(&::vy_InvalidateRegCache) vy_InvalidateRegCache = nullptr;
    decltype(&::vy_IsSOC) vy_IsSOC = nullptr;
    decltype(&::vy_Home) vy_Home = nullptr;
    decltype(&::vy_stopTransport) vy_stopTransport = nullptr;
    decltype(&::vy_CloseCameras) vy_CloseCameras = nullptr;
    decltype(&::vy_SensorInfo) vy_SensorInfo = nullptr;
};

/// The functions of the calibration library by their own names. No member is null once installed.
struct Shadefit {
    decltype(&::sf_Create) sf_Create = nullptr;
    decltype(&::sf_Create2) sf_Create2 = nullptr;
    decltype(&::sf_SetInputImage2) sf_SetInputImage2 = nullptr;
    decltype(&::sf_SetInputImageYcbcr) sf_SetInputImageYcbcr = nullptr;
    decltype(&::sf_FindSolution) sf_FindSolution = nullptr;
    decltype(&::sf_FindApga) sf_FindApga = nullptr;
    decltype(&::sf_FindAutoPga) sf_FindAutoPga = nullptr;
    decltype(&::sf_DumpRegList) sf_DumpRegList = nullptr;
    decltype(&::sf_DumpRegFile) sf_DumpRegFile = nullptr;
    decltype(&::sf_Destroy) sf_Destroy = nullptr;
};

/// The libraries in use. The first call loads the shared library, looked for beside the plug-in's own file
/// and then where the system's loader looks. A library or function that is missing is logged once and
/// replaced by a stand-in that answers "absent": exists 0, find null, transfers -1, create null.
Veyra2 const& veyra2();
Shadefit const& shadefit();

/// Nothing but stand-ins: the library as a camera finds it that is none.
Veyra2 const& absentVeyra2();

/// Installs another implementation; null members are filled with "absent" stand-ins. The shared library is
/// not loaded when this comes first.
void installVeyra2(Veyra2 const& table);
void installShadefit(Shadefit const& table);

} // namespace kestra
