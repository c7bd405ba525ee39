#include "common/host.h"
#include "common/libraries.h"
#include "common/sensor.h"

#include <gtest/gtest.h>
#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace kestra;

namespace {
// Nobody was installed yet when a program begins: where the libraries are missing, this is what it works
// with.
TEST(Libraries, WhereTheyAreMissingNothingExistsNothingIsFoundAndEveryTransferFails) {
    installVeyra2({});
    installShadefit({});
    Veyra2 const& v = veyra2();
    vy_RegisterDescription const reg{};
    uint32_t word = 7;
    EXPECT_EQ(v.vy_ExistsRegister(nullptr, "R"), 0);
    EXPECT_EQ(v.vy_ExistsBitfield(nullptr, "R", "B"), 0);
    EXPECT_EQ(v.vy_FindRegister(nullptr, "R"), nullptr);
    EXPECT_EQ(v.vy_FindBitfield(nullptr, "R", "B"), nullptr);
    EXPECT_EQ(v.vy_FindRegisterAddr(nullptr, 0, 0, 0), nullptr);
    EXPECT_EQ(v.vy_dataSize(4), 0U);
    EXPECT_EQ(v.vy_ReadSensorRegStr(nullptr, "R", "", &word), -1);
    EXPECT_EQ(v.vy_WriteSensorRegStr(nullptr, "R", "", 1), -1);
    EXPECT_EQ(v.vy_ReadSensorReg(nullptr, &reg, &word), -1);
    EXPECT_EQ(v.vy_WriteSensorReg(nullptr, &reg, 1), -1);
    EXPECT_EQ(v.vy_readRegisters(nullptr, 0xA8, 0, 1, &word), -1);
    EXPECT_EQ(v.vy_writeRegisters(nullptr, 0xA8, 0, 1, &word), -1);
    EXPECT_EQ(v.vy_setMode(nullptr, 1, 16), -1);
    EXPECT_EQ(v.vy_IsSOC(nullptr), 0);
    EXPECT_EQ(v.vy_Home(), nullptr);
    EXPECT_EQ(v.vy_stopTransport(nullptr), -1);
    EXPECT_EQ(v.vy_SensorInfo(nullptr), nullptr);
    v.vy_InvalidateRegCache(nullptr);
    v.vy_CloseCameras();
    EXPECT_EQ(word, 7U);

    Shadefit const& s = shadefit();
    EXPECT_EQ(s.sf_Create(1, 1, -1), nullptr);
    EXPECT_EQ(s.sf_Create2(nullptr, 1, 1, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(s.sf_SetInputImage2(nullptr, nullptr, 1, 1, 8, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(s.sf_SetInputImageYcbcr(nullptr, nullptr, 1, 1, nullptr, -1, -1), 0);
    EXPECT_EQ(s.sf_FindSolution(nullptr, nullptr), -1);
    EXPECT_EQ(s.sf_FindApga(nullptr, nullptr), -1);
    EXPECT_EQ(s.sf_FindAutoPga(nullptr, nullptr), -1);
    EXPECT_EQ(s.sf_DumpRegList(nullptr), nullptr);
    EXPECT_EQ(s.sf_DumpRegFile(nullptr, "", 0, 0, 0), -1);
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

TEST(Libraries, AFunctionThatIsThereIsKept) {
    Veyra2 library;
    library.vy_IsSOC = [](vy_Camera*) { return 5; };
    installVeyra2(library);
    EXPECT_EQ(veyra2().vy_IsSOC(nullptr), 5);
    EXPECT_EQ(veyra2().vy_dataSize(4), 0U);
}

TEST(Libraries, NullCameraIsNeverHandedToTheLibrary) {
    static int calls;
    calls = 0;
    Veyra2 table;
    table.vy_ExistsBitfield = [](vy_Camera*, char const*, char const*) { return ++calls; };
    table.vy_IsSOC = [](vy_Camera*) { return ++calls; };
    table.vy_SensorInfo = [](vy_Camera*) -> vy_SensorDescription const* {
        ++calls;
        return nullptr;
    };
    installVeyra2(table);
    Sensor const none(nullptr);
    EXPECT_FALSE(none.existsBitfield("R", "B"));
    EXPECT_FALSE(none.isSystemOnChip());
    EXPECT_FALSE(none.info().has_value());
    EXPECT_EQ(calls, 0);
}

TEST(Host, TextSettingOfAFullBufferIsTerminated) {
    HostServices services{};
    services.readTextSetting = [](char const*, char* buffer, uint32_t size, char const*) {
        for (uint32_t i = 0; i < size; ++i)
            buffer[i] = 'x';
    };
    EXPECT_EQ(Host(services).readTextSetting("LensAssist Dir"), QByteArray(259, 'x'));
}
} // namespace
