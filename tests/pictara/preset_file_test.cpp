#include "simulator/host/session/preset_file.h"
#include "tests/pictara/test_frames.h"
#include "tests/support/camera_under_test.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace pictara {
namespace {
constexpr char kIni[] = "[Other]\n"
                        "STATE = Gamma, 1\n"
                        "[ lens calibration SETUP ]\r\n"
                        "#TOOLTIP = STATE = Gamma, 2\n"
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
                        "REG = 0, 0xFFFF, 1\n"
                        "REG = 0, 0x3600\n"
                        "REG = 0, 0x3600, many\n"
                        "LOAD = Other\n"
                        "nonsense\n"
                        "STATE = Contrast, 21";

struct PresetTest : testing::Test {
    PresetTest() {
        writeRegister(*sensor, "P_GR_P0Q1", 0xF00F);
        QFile file(ini);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(kIni) > 0);
    }

    QTemporaryDir folder;
    QString const ini = folder.filePath("host.ini");
    Camera const sensor = openChanged(R"({"registers": {"more": [
        {"name": "SECOND_PAGE", "id": 1, "address": 13824},
        {"name": "VARIABLE", "addressSpace": 1, "id": 3, "address": "0x21"}]}})");
    StateVariables states{bayerCamera(4, 4, 3)};
    int notified = 0;
    SensorRegisters registers{sensor->handle(), [this] { ++notified; }};
};

TEST_F(PresetTest, AppliesEveryKindOfLineAndNothingElse) {
    EXPECT_EQ(applyPreset(ini, "Lens Calibration Setup", states, registers), 9);
    EXPECT_FALSE(applyPreset(ini, "Lens Calibration", states, registers));
    EXPECT_EQ(states.read("Gamma"), 20);
    EXPECT_EQ(states.read("Black Offset"), -7);
    EXPECT_EQ(states.read("Contrast"), 21);
    EXPECT_EQ(readRegister(*sensor, "P_GR_P0Q0"), 0x4000U);
    EXPECT_EQ(readRegister(*sensor, "SECOND_PAGE"), 77U);
    EXPECT_EQ(readRegister(*sensor, "COARSE_INTEGRATION_TIME"), 32U);
    EXPECT_EQ(readRegister(*sensor, "POLY_SC_ENABLE"), 0x8000U);
    EXPECT_EQ(readRegister(*sensor, "P_GR_P0Q1"), 0xFABFU);
    EXPECT_EQ(readRegister(*sensor, "VARIABLE"), 9U);
    EXPECT_EQ(notified, 1);
}

TEST_F(PresetTest, WhatTheCameraDictatesIsNotSet) {
    states.set("X Offset", 0);
    states.set("Y Offset", 5);
    EXPECT_EQ(states.read("X Offset"), 1);
    EXPECT_EQ(states.read("Y Offset"), 1);
}
} // namespace
} // namespace pictara
