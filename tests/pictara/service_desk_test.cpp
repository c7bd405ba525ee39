#include "simulator/host/service_desk.h"
#include "tests/pictara/test_frames.h"
#include "tests/support/camera_under_test.h"

#include <QTemporaryDir>
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

TEST_F(ServiceDeskTest, NotifiesAtOnceOutsideOfAGroupAndOnceForAGroup) {
    host.writeRegister(kGain, "", 5);
    EXPECT_EQ(notified, 1);
    EXPECT_EQ(seenByNotification, 5U);

    host.beginChanges();
    host.writeRegister(kGain, "", 6);
    host.beginChanges();
    host.writeListEntry(0x3012, 0, 0, 0, 7);
    host.endChanges();
    EXPECT_EQ(notified, 1) << "the outer group is still open";
    host.endChanges();
    EXPECT_EQ(notified, 2);
    EXPECT_EQ(seenByNotification, 7U);
    EXPECT_EQ(desk.listEntriesWritten(), 1U);
}

TEST_F(ServiceDeskTest, DoesNotNotifyWhenNoRegisterChanged) {
    host.beginChanges();
    host.setState("Gamma", 9);
    host.writeRegister("NO_SUCH", "", 1);
    host.writeListEntry(0x9999, 0, 0, 0, 1);
    host.endChanges();
    EXPECT_EQ(notified, 0);
    EXPECT_EQ(desk.listEntriesWritten(), 0U);
    host.endChanges(); // one too many must not open the next group's bracket
    host.beginChanges();
    host.writeRegister(kGain, "", 1);
    EXPECT_EQ(notified, 0);
    host.endChanges();
    EXPECT_EQ(notified, 1);
}

TEST_F(ServiceDeskTest, TextsAreCutToTheBufferAndFallBack) {
    char buffer[8] = "xxxxxxx";
    host.readTextSetting("LensAssist Dir", buffer, 8, "none");
    EXPECT_STREQ(buffer, "none");
    host.writeTextSetting("LensAssist Dir", "/home/lens shading");
    host.readTextSetting("LensAssist Dir", buffer, 8, "none");
    EXPECT_STREQ(buffer, "/home/l");
    char path[260];
    host.readTextSetting("IniFileName", path, sizeof path, "");
    EXPECT_EQ(QString::fromLocal8Bit(path), folder.filePath("host.ini"));
}

TEST_F(ServiceDeskTest, OptionsAreKeptForTheNextSittingApartFromSettings) {
    host.writeTextSetting("Still File", "setting");
    host.writeOption("Still File", "a.png");
    EXPECT_STREQ(host.readOption("Still File"), "a.png");
    EXPECT_STREQ(host.readOption("unknown"), "");
    char buffer[16];
    host.readTextSetting("Still File", buffer, sizeof buffer, "");
    EXPECT_STREQ(buffer, "setting");
    SettingsStore next(folder.filePath("settings.ini"));
    QString error;
    ASSERT_TRUE(next.read(&error)) << qPrintable(error);
    ServiceDesk const nextDesk(states, next, registers, {});
    EXPECT_STREQ(host.readOption("Still File"), "a.png");
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

TEST(SettingsStore, KeepsAnyTextForTheNextSitting) {
    QTemporaryDir const folder;
    QString const file = folder.filePath("settings.ini");
    QByteArray const key = "LensAssist Dir for 50% [a=b] \xE4\n", value = " \\\\server\\a=b%20 \r\n\xFC ";
    {
        SettingsStore settings(file);
        settings.setText(key, value);
        settings.setInteger("LensAssist Falloff for S1", -95);
        settings.setText("Empty", "");
    }
    SettingsStore settings(file);
    QString error;
    ASSERT_TRUE(settings.read(&error)) << qPrintable(error);
    EXPECT_EQ(settings.text(key, {}), value);
    EXPECT_EQ(settings.integer("LensAssist Falloff for S1", 1), -95);
    EXPECT_EQ(settings.text("Empty", "fallback"), QByteArray());
    EXPECT_EQ(settings.integer(key, 42), 42);
}

} // namespace
} // namespace pictara
