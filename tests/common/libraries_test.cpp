#include "common/libraries.h"
#include "common/sensor.h"
#include "common/shading_handle.h"
#include "tests/fakes/fake_host.h"
#include "tests/fakes/fake_libraries.h"

#include <gtest/gtest.h>

namespace {

TEST(Libraries, NullCameraIsNeverHandedToTheLibrary) {
    FakeHost const host;
    FakeLibraries const library;
    Sensor const none(nullptr);
    EXPECT_FALSE(none.existsBitfield("R", "B"));
    EXPECT_FALSE(none.isSystemOnChip());
    EXPECT_FALSE(none.info().has_value());
    EXPECT_TRUE(host.log.empty());
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
