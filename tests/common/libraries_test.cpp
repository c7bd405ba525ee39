#include "common/libraries.h"
#include "common/sensor.h"
#include "common/shading_handle.h"

#include <gtest/gtest.h>

namespace {

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

} // namespace
