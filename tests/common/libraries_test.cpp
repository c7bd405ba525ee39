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

TEST(Libraries, MissingFunctionsAnswerAbsentAndNothingIsLoadedInTheirPlace) {
    installVeyra2({});
    installShadefit({});
    int dummy = 0;
    auto* const camera = reinterpret_cast<vy_Camera*>(&dummy);
    Sensor const sensor(camera);
    EXPECT_FALSE(sensor.existsBitfield("R", "B"));
    EXPECT_FALSE(sensor.isSystemOnChip());
    EXPECT_FALSE(sensor.info().has_value());
    uint32_t word = 0;
    EXPECT_EQ(veyra2().vy_readRegisters(camera, 0xA8, 0, 1, &word), -1);
    EXPECT_EQ(veyra2().vy_setMode(camera, 1, 16), -1);
    EXPECT_EQ(shadefit().sf_Create2(nullptr, 1, 1, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(shadefit().sf_FindSolution(nullptr, nullptr), -1);
    // Both lie beside the test program.
#ifdef Q_OS_WIN
    for (char const* const library : {"veyra2.dll", "shadefit.dll"})
        EXPECT_FALSE(GetModuleHandleA(library)) << library;
#else
    for (char const* const library : {"libveyra2.so", "libshadefit.so"})
        EXPECT_FALSE(dlopen(library, RTLD_LAZY | RTLD_NOLOAD)) << library;
#endif
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

TEST(ShadingHandle, IsDestroyedOnceWhenTheLastShareGoes) {
    static int destroyed;
    destroyed = 0;
    Shadefit table;
    table.sf_Destroy = [](sf_Handle*) { ++destroyed; };
    installShadefit(table);
    int dummy = 0;
    ShadingHandle page = ownShadingHandle(reinterpret_cast<sf_Handle*>(&dummy));
    ShadingHandle insideACall = page;
    page.reset();
    EXPECT_EQ(destroyed, 0);
    insideACall.reset();
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(ownShadingHandle(nullptr), nullptr);
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
