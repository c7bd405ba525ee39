#include "tests/camera/camera_under_test.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

// Rules by which software chooses registers or a way to the EEPROM, and what meets each of them.
struct Meeting {
    char const* rule;
    char const* bases; ///< JSON
    char const* reg;
    char const* bitfield;
};

constexpr Meeting kMeetings[] = {
    {"switch of a sensor", R"("poly-12bit")", "POLY_SC_ENABLE", "ENABLE"},
    {"switch of a system-on-chip", R"("soc-pga")", "COLOR_PIPELINE_CONTROL", "PGA_ENABLE"},
    {"switch of kind 16", R"("kind16")", "COLOR_PIPELINE_CONTROL", "LENS_SHADING"},
    {"switch of kind 22", R"("kind22")", "LENS_CORRECTION_CONTROL", "ENABLE"},
    {"switch of kind 25", R"("kind25")", "LENS_CORRECTION", "ENABLE"},
    {"switch of kind 95", R"("kind95")", "CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"},
    {"last illuminant setting", R"("kind95")", "CAM_PGA_R_CONFIG_BLUE_Q14", ""},
    {"first zone", R"("kind22")", "ZONE_BOUNDS_X1_X2", ""},
    {"last zone", R"("kind22")", "ZONE_X6Y6", ""},
    {"zones of a colour", R"("kind22")", "SECOND_DERIV_ZONE_7_GREEN2", ""},
    {"slopes of a colour", R"("kind22")", "DF_DY_RED", ""},
    {"corners of a plane", R"("kind22")", "K_FACTOR_IN_K_FX_FY_G2_BR", ""},
    {"quarters of a plane", R"("kind22")", "LENS_K_FACTOR_G1_Q3", ""},
    {"corner curves", R"("kind22")", "CF_34_B", ""},
    {"factors of all colours", R"("kind22")", "CORNER_FACTOR_CONTROL", ""},
    {"other names of the planes", R"("kind198")", "P_CB_P4Q4", ""},
    {"register of a secondary map", R"("kind198")", "P_GB_Q5", ""},
    {"bridge", R"("kind71")", "IO_EEPROM_STATUS", ""},
    {"bus master", R"("kind103")", "DMA_CTRL", ""},
    {"bus master of a system-on-chip", R"("kind111")", "DMA_CTRL", ""},
    {"colour matrices", R"("kind111")", "AWB_CCM_RL_10", ""},
    {"sequencer", R"("kind68-1")", "SEQUENCERSETUP_CMD", ""},
    {"sequencer object", R"("kind68-2")", "SEQUENCERSETUP_MANUALOBJ", ""},
    {"mode", R"("kind68-1")", "PGASETUP_MODE", ""},
    {"zone of the mode", R"("kind68-2")", "PGAOUTPUT_CURZONE", ""},
    {"settings left out", R"("kind68-1")", "PGASETUP_RIGHT_BLUEQ14", ""},
    {"powers left out, and not", R"("kind68-1")", "P_CB_Q5", ""},
    {"tables", R"("kind68-2")", "PGATABLECWF_DATA_099", ""},
    {"switch of kind 72", R"("kind72-1")", "CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"},
    {"temperatures of the colour matrices", R"("kind72-1")", "CAM_AWB_CCM_R_CTEMP", ""},
    {"white-balance gains", R"("kind72-1")", "CAM_AWB_CCM_L_BG_GAIN", ""},
    {"tables with columns first", R"("kind76-1")", "PGA_TABLE_D65_CENTER_COLUMN", ""},
    {"automatic mode", R"("kind76-2")", "CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE"},
    {"zone of the automatic mode", R"("kind76-2")", "PGA_CURRENT_ZONE", ""},
    {"polynomial left out", R"("kind76-2")", "P_GB_P4Q4", ""},
    {"origin left out", R"("kind76-2")", "CENTER_COLUMN", ""},
};

Camera openBased(QByteArray const& bases) {
    TestFiles const files;
    QString error;
    Camera camera =
        SimulatedCamera::open(files.write(QStringLiteral("p.json"), "{\"base\": " + bases + "}"), &error);
    EXPECT_TRUE(camera) << qPrintable(error);
    return camera;
}

TEST(Profiles, EveryRuleIsMetBySomeProfile) {
    for (Meeting const& row : kMeetings) {
        SCOPED_TRACE(row.rule);
        Camera const camera = openBased(row.bases);
        ASSERT_TRUE(camera);
        EXPECT_TRUE(*row.bitfield == '\0' ? vy_ExistsRegister(camera->handle(), row.reg)
                                          : vy_ExistsBitfield(camera->handle(), row.reg, row.bitfield));
    }
}

// A stored record switches by the first pair that a sensor has, so a second one would be left as it is.
TEST(Profiles, SensorsWithAControlOfTheirOwnHaveNoOtherSwitch) {
    for (char const* const profile : {"kind95", "kind72-1", "kind72-2", "kind76-1", "kind76-2"}) {
        SCOPED_TRACE(profile);
        Camera const camera = openBased(QByteArray("\"") + profile + '"');
        EXPECT_FALSE(vy_ExistsRegister(camera->handle(), "COLOR_PIPELINE_CONTROL"));
        EXPECT_FALSE(vy_ExistsRegister(camera->handle(), "POLY_SC_ENABLE"));
    }
}

struct Wiring {
    char const* profile;
    uint32_t busAddress; ///< of a raw transfer that is answered; 0: none is
    char firstByte;
};

TEST(Profiles, EepromsLieWhereTheirKindsLookForThem) {
    for (Wiring const& row : {Wiring{"poly-12bit", 0xA8, '\xFF'},
                              {"kind154", 0xA8, 'V'},
                              {"kind95", 0xAA, '\xFF'},
                              {"kind198", 0xAC, 'V'},
                              {"kind68-1", 0xA8, 'V'},
                              {"kind68-2", 0xA8, 'V'},
                              {"kind72-1", 0xA8, 'V'},
                              {"kind72-2", 0xA8, '\xFF'},
                              {"kind76-1", 0xA8, 'V'},
                              {"kind76-2", 0xA8, 'V'},
                              {"ycbcr", 0, 0},
                              {"kind71", 0, 0},
                              {"kind103", 0, 0}}) {
        SCOPED_TRACE(row.profile);
        Camera const camera = openBased(QByteArray("\"") + row.profile + '"');
        ASSERT_TRUE(camera);
        (void)vy_setMode(camera->handle(), 1, 16);
        (void)vy_setMode(camera->handle(), 2, 8);
        for (uint32_t const address : {0xA8U, 0xAAU, 0xACU}) {
            uint32_t word = 0x100; // no byte's value
            (void)vy_readRegisters(camera->handle(), address, 0, 1, &word);
            EXPECT_EQ(word, address == row.busAddress ? uint8_t(row.firstByte) : 0x100U) << address;
        }
    }
}

} // namespace
