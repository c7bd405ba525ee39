#include "simulator/host/session/preset_file.h"
#include "simulator/host/session/service_desk.h"
#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>

namespace pictara {
namespace {
constexpr char kIni[] = "[Other]\n"
                        "STATE = Gamma, 1\n"
                        "[ lens calibration SETUP ]\r\n"
                        "; STATE = Gamma, 3\n"
                        "// STATE = Gamma, 4\n"
                        "STATE = Gamma, 20\r\n"
                        "  state =  Black Offset ,  -7  \n"
                        "REG = 0, 0x3600, 0x4000 // first coefficient\n"
                        "REG = 1, 13824, 77\n"
                        "REG = COARSE_INTEGRATION_TIME, 32\n"
                        "BITFIELD = POLY_SC_ENABLE, ENABLE, 1\n"
                        "BITFIELD = 0, 0x3602, 0x0FF0, 0xAB\n"
                        "VAR = 3, 0x21, 9\n"
                        "REG = 0, 0x3600\n"
                        "REG = 0, 0x3600, many\n"
                        "nonsense\n"
                        "STATE = Contrast, 21";

constexpr char kGain[] = "COARSE_INTEGRATION_TIME"; // at 0x3012

struct ServiceDeskTest : testing::Test {
    TestFiles files;
    Camera const sensor = openChanged(R"(, "array": {"bayerPhase": 3}, "registers": {"more": [
        {"name": "SECOND_PAGE", "id": 1, "address": 13824},
        {"name": "VARIABLE", "addressSpace": 1, "id": 3, "address": "0x21"}]})");
    StateVariables states{sensor->description()};
    SettingsStore settings{files.path("settings.ini")};
    int notified = 0;
    uint32_t seenByNotification = 0;
    SensorRegisters registers{sensor->handle(), [this] {
                                  ++notified;
                                  seenByNotification = ServiceDesk::table().readRegister(kGain, "", 1);
                              }};
    ServiceDesk desk{states, settings, registers, files.path("host.ini")};
    HostServices const& host = ServiceDesk::table();
};

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
    SettingsStore next(files.path("settings.ini"));
    ASSERT_TRUE(next.isReadable());
    ServiceDesk const nextDesk(states, next, registers, {});
    auto const textOf = [&](char const* name, char const* fallback, uint32_t size = 64) {
        char buffer[64];
        host.readTextSetting(name, buffer, size, fallback);
        return QByteArray(buffer);
    };
    EXPECT_EQ(textOf(key, ""), value);
    EXPECT_EQ(textOf("Empty", "fallback"), "");
    EXPECT_EQ(textOf(key, "", 4), value.left(3)) << "cut to the buffer";
    EXPECT_EQ(textOf("unknown", nullptr), "");
    EXPECT_EQ(host.readIntSetting("LensAssist Falloff for S1", 1), -95);
    EXPECT_EQ(host.readIntSetting(key, 42), 42);
    EXPECT_STREQ(host.readOption(key), "a.png");
}

TEST_F(ServiceDeskTest, AppliesEveryKindOfPresetLineAndNothingElse) {
    QString const ini = files.write("host.ini", kIni);
    writeRegister(*sensor, "P_GR_P0Q1", 0xF00F);
    EXPECT_EQ(applyPreset(ini, "Lens Calibration Setup", states, registers), 9);
    EXPECT_FALSE(applyPreset(ini, "Lens Calibration", states, registers));
    for (auto const& [state, value] : {std::pair{"Gamma", 20}, {"Black Offset", -7}, {"Contrast", 21}})
        EXPECT_EQ(states.read(state), value) << state;
    for (auto const& [reg, value] : {std::pair{"P_GR_P0Q0", 0x4000U},
                                     {"SECOND_PAGE", 77U},
                                     {kGain, 32U},
                                     {"POLY_SC_ENABLE", 0x8000U},
                                     {"P_GR_P0Q1", 0xFABFU},
                                     {"VARIABLE", 9U}})
        EXPECT_EQ(readRegister(*sensor, reg), value) << reg;
    EXPECT_EQ(notified, 1);
}

TEST_F(ServiceDeskTest, WhatTheCameraDictatesIsNotSet) {
    for (auto const& [state, value] : {std::pair{"X Offset", 0}, {"Y Offset", 5}}) {
        states.set(state, value);
        EXPECT_EQ(states.read(state), 1);
    }
}
} // namespace
} // namespace pictara
