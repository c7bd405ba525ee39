#pragma once

#include "published/shadefit.h"
#include "published/veyra2.h"

namespace kestra {
// The one list of the libraries' functions, and what a missing one answers: nothing exists (0), nothing is
// found (null), every transfer fails (-1).
#define KESTRA_VEYRA2(FUNCTION)                                                                              \
    FUNCTION(vy_ExistsRegister, 0)                                                                           \
    FUNCTION(vy_ExistsBitfield, 0)                                                                           \
    FUNCTION(vy_FindRegister, nullptr)                                                                       \
    FUNCTION(vy_FindBitfield, nullptr)                                                                       \
    FUNCTION(vy_FindRegisterAddr, nullptr)                                                                   \
    FUNCTION(vy_dataSize, 0)                                                                                 \
    FUNCTION(vy_ReadSensorRegStr, -1)                                                                        \
    FUNCTION(vy_WriteSensorRegStr, -1)                                                                       \
    FUNCTION(vy_ReadSensorReg, -1)                                                                           \
    FUNCTION(vy_WriteSensorReg, -1)                                                                          \
    FUNCTION(vy_readRegisters, -1)                                                                           \
    FUNCTION(vy_writeRegisters, -1)                                                                          \
    FUNCTION(vy_setMode, -1)                                                                                 \
    FUNCTION(vy_InvalidateRegCache, 0)                                                                       \
    FUNCTION(vy_IsSOC, 0)                                                                                    \
    FUNCTION(vy_Home, nullptr)                                                                               \
    FUNCTION(vy_stopTransport, -1)                                                                           \
    FUNCTION(vy_CloseCameras, 0)                                                                             \
    FUNCTION(vy_SensorInfo, nullptr)
#define KESTRA_SHADEFIT(FUNCTION)                                                                            \
    FUNCTION(sf_Create, nullptr)                                                                             \
    FUNCTION(sf_Create2, nullptr)                                                                            \
    FUNCTION(sf_SetInputImage2, 0)                                                                           \
    FUNCTION(sf_SetInputImageYcbcr, 0)                                                                       \
    FUNCTION(sf_FindSolution, -1)                                                                            \
    FUNCTION(sf_FindApga, -1)                                                                                \
    FUNCTION(sf_FindAutoPga, -1)                                                                             \
    FUNCTION(sf_DumpRegList, nullptr)                                                                        \
    FUNCTION(sf_DumpRegFile, -1)                                                                             \
    FUNCTION(sf_Destroy, 0)

// A member cannot stand in parentheses. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define KESTRA_POINTER(name, absent) decltype(&::name) name = nullptr;

/// The functions of the sensor-access library by their own names. No member is null once installed.
struct Veyra2 {
    KESTRA_VEYRA2(KESTRA_POINTER)
};

/// The functions of the calibration library by their own names. No member is null once installed.
struct Shadefit {
    KESTRA_SHADEFIT(KESTRA_POINTER)
};

#undef KESTRA_POINTER

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
