#include "common/libraries.h"
#include "common/sensor.h"

#include <array>
#include <gtest/gtest.h>
#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace kestra;

namespace {
template <typename Answer, typename... Arguments>
int64_t ask(Answer (*function)(Arguments...)) {
    return int64_t(function(Arguments{}...)); // of a pointer, too
}

template <typename... Functions>
void expectAnswer(int64_t answer, Functions... functions) {
    EXPECT_EQ((std::array{ask(functions)...}), (std::array{(void(functions), answer)...}));
}

// Nobody was installed yet when a program begins: where the libraries are missing, this is what it works
// with.
TEST(Libraries, WhereTheyAreMissingNothingExistsNothingIsFoundAndEveryTransferFails) {
    installVeyra2({});
    installShadefit({});
    Veyra2 const& v = veyra2();
    expectAnswer(0, v.vy_ExistsRegister, v.vy_ExistsBitfield, v.vy_FindRegister, v.vy_FindBitfield,
                 v.vy_FindRegisterAddr, v.vy_dataSize, v.vy_IsSOC, v.vy_Home, v.vy_SensorInfo);
    expectAnswer(-1, v.vy_ReadSensorRegStr, v.vy_WriteSensorRegStr, v.vy_ReadSensorReg, v.vy_WriteSensorReg,
                 v.vy_readRegisters, v.vy_writeRegisters, v.vy_setMode, v.vy_stopTransport);
    v.vy_InvalidateRegCache(nullptr);
    v.vy_CloseCameras();
    Shadefit const& s = shadefit();
    expectAnswer(0, s.sf_Create, s.sf_Create2, s.sf_SetInputImage2, s.sf_SetInputImageYcbcr,
                 s.sf_DumpRegList);
    expectAnswer(-1, s.sf_FindSolution, s.sf_FindApga, s.sf_FindAutoPga, s.sf_DumpRegFile);
    s.sf_Destroy(nullptr);
    // Both lie beside the test program.
#ifdef Q_OS_WIN
    for (char const* const library : {"veyra2.dll", "shadefit.dll"})
        EXPECT_FALSE(GetModuleHandleA(library)) << library;
#else
    for (char const* const library : {"libveyra2.so", "libshadefit.so"})
        EXPECT_FALSE(dlopen(library, RTLD_LAZY | RTLD_NOLOAD)) << library;
#endif
}

TEST(Libraries, AFunctionThatIsThereIsKeptAndNeverHandedANullCamera) {
    Veyra2 table;
    table.vy_ExistsBitfield = [](vy_Camera*, char const*, char const*) { return 1; };
    table.vy_IsSOC = [](vy_Camera*) { return 5; };
    table.vy_SensorInfo = [](vy_Camera*) -> vy_SensorDescription const* {
        static vy_SensorDescription const description{};
        return &description;
    };
    installVeyra2(table);
    EXPECT_EQ(veyra2().vy_IsSOC(nullptr), 5);
    EXPECT_EQ(veyra2().vy_dataSize(4), 0U);
    Sensor const none(nullptr);
    EXPECT_FALSE(none.existsBitfield("R", "B") || none.isSystemOnChip() || none.info());
}
} // namespace
