#include "simulator/host/session/service_desk.h"
#include "tests/pictara/test_frames.h"
#include "tests/support/camera_under_test.h"

#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>

namespace pictara {
namespace {
constexpr char kGain[] = "COARSE_INTEGRATION_TIME"; // at 0x3012

struct ServiceDeskTest : testing::Test {
    QTemporaryDir folder;
    Camera const sensor = openChanged(R"({"sensorName": "A"})");
    StateVariables states{bayerCamera(4, 4)};
    SettingsStore settings{folder.filePath("settings.ini")};
    int notified = 0;
    uint32_t seenByNotification = 0;
    SensorRegisters registers{sensor->handle(), [this] {
                                  ++notified;
                                  seenByNotification = ServiceDesk::table().readRegister(kGain, "", 1);
                              }};
    ServiceDesk desk{states, settings, registers, folder.filePath("host.ini")};
    HostServices const& host = ServiceDesk::table();
};

TEST_F(ServiceDeskTest, FillsEverySlot) {
    HostServices::Unused functions[33];
    static_assert(sizeof functions == sizeof host);
    std::memcpy(functions, &host, sizeof functions);
    for (HostServices::Unused const function : functions)
        EXPECT_NE(function, nullptr);
}

TEST_F(ServiceDeskTest, NotifiesOnceForTheOuterGroupAndNotAtAllWithoutARegister) {
    host.beginChanges();
    host.beginChanges();
    host.writeListEntry(0x3012, 0, 0, 0, 7);
    host.endChanges();
    EXPECT_EQ(notified, 0) << "the outer group is still open";
    host.endChanges();
    EXPECT_EQ(seenByNotification, 7U);

    host.beginChanges();
    host.setState("Gamma", 9);
    host.writeRegister("NO_SUCH", "", 1);
    host.writeListEntry(0x9999, 0, 0, 0, 1);
    host.endChanges();
    host.endChanges(); // one too many must not open the next group's bracket
    host.beginChanges();
    host.writeRegister(kGain, "", 1);
    EXPECT_EQ(notified, 1);
    host.endChanges();
    EXPECT_EQ(notified, 2);
    EXPECT_EQ(desk.listEntriesWritten(), 1U);
}

TEST_F(ServiceDeskTest, TextsAreCutToTheBufferAndFallBack) {
    char buffer[8] = "xxxxxxx";
    host.readTextSetting("LensAssist Dir", buffer, 8, "none");
    EXPECT_STREQ(buffer, "none");
    host.writeTextSetting("LensAssist Dir", "/home/lens shading");
    host.readTextSetting("LensAssist Dir", buffer, 8, "none");
    EXPECT_STREQ(buffer, "/home/l");
    host.readTextSetting("unknown", buffer, 8, nullptr);
    EXPECT_STREQ(buffer, "");
}

TEST_F(ServiceDeskTest, ReachesTheBusAtTheWidthsOfEachCall) {
    sensor->useVirtualTime();
    host.writeBusByte(0xA8, 0x1FF, 0x5A, 16, 8);
    sensor->advanceTime(20);
    host.writeBusByte(0xA8, 0x1FF, 0xFF, 8, 8);
    EXPECT_EQ(host.readBusByte(0xA8, 0x1FF, 16, 16), 0U);
    EXPECT_EQ(host.readBusByte(0xA8, 0x1FF, 16, 8), 0x5AU) << "widths were left over from another call";
    EXPECT_EQ(host.readBusByte(0xB0, 0x1FF, 16, 8), 0U);
}

// Options lie apart from settings; both hold any text.
TEST_F(ServiceDeskTest, SettingsAndOptionsAreKeptForTheNextSitting) {
    QByteArray const key = "LensAssist Dir for 50% [a=b] \xE4\n", value = " \\\\server\\a=b%20 \r\n\xFC ";
    host.writeTextSetting(key, value);
    host.writeIntSetting("LensAssist Falloff for S1", -95);
    host.writeTextSetting("Empty", "");
    host.writeOption(key, "a.png");
    SettingsStore next(folder.filePath("settings.ini"));
    ASSERT_TRUE(next.isReadable());
    ServiceDesk const nextDesk(states, next, registers, {});
    char buffer[64];
    host.readTextSetting(key, buffer, sizeof buffer, "");
    EXPECT_EQ(QByteArray(buffer), value);
    host.readTextSetting("Empty", buffer, sizeof buffer, "fallback");
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(host.readIntSetting("LensAssist Falloff for S1", 1), -95);
    EXPECT_EQ(host.readIntSetting(key, 42), 42);
    EXPECT_STREQ(host.readOption(key), "a.png");
    EXPECT_STREQ(host.readOption("unknown"), "");
}
} // namespace
} // namespace pictara
