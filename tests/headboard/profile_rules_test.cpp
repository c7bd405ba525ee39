#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/register_names.h"
#include "headboard/register_record.h"
#include "headboard/register_set.h"
#include "tests/support/camera_under_test.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>

using namespace kestra;

// The simulated sensors meet the rules that only few kinds of sensors do, so that a rule that was lost is
// noticed on a whole camera and not only on a register map made for its test.

namespace {
struct Row {
    char const* profile;
    QString passedOver = {}; ///< registers that the sensor has and the record has not
    QString alsoStored = {}; ///< registers that must not be passed over with them
    uint32_t deviceAddress = 0xA8;
};

// By name, not by bytes, some of which nobody sets.
void PrintTo(Row const& row, std::ostream* out) { *out << row.profile; }

Row const kRows[] = {
    {"lens-zones-22", "",
     "ZONE_BOUNDS_X1_X2 ZONE_X6Y6 SECOND_DERIV_ZONE_7_GREEN2 DF_DY_RED K_FACTOR_IN_K_FX_FY_G2_BR "
     "LENS_K_FACTOR_G1_Q3 CF_34_B CORNER_FACTOR_CONTROL"},
    {"firmware-switch-95", "", "CAM_PGA_R_CONFIG_BLUE_Q14 CAM_PGA_PGA_CONTROL", 0xAA},
    {"soc-bus-master-111", "", "AWB_CCM_RL_10"},
    {"companion-198", "", "P_CB_P4Q4 P_GB_Q5", 0xAC},
    {"three-tables-68", "P_GR_Q5 P_RD_Q5 PGASETUP_LEFT_COLORTEMP PGASETUP_RIGHT_BLUEQ14",
     "P_CR_Q5 P_CB_Q5 SEQUENCERSETUP_MANUALOBJ SEQUENCERSETUP_CMD PGASETUP_MODE"},
    {"zone-tables-68", "P_BL_Q5", "PGATABLECWF_DATA_099 SEQUENCERSETUP_MANUALOBJ PGAOUTPUT_CURZONE"},
    {"adaptive-72", "", "CAM_AWB_CCM_R_CTEMP CAM_AWB_CCM_L_BG_GAIN CAM_PGA_PGA_CONTROL"},
    {"adaptive-72-flipped"},
    {"adaptive-76", "", "P_GR_P0Q0 CENTER_ROW PGA_TABLE_D65_CENTER_COLUMN"},
    {"automatic-76", "P_GR_P0Q0 CENTER_ROW CENTER_COLUMN",
     "PGA_TABLE_A_DATA_0 CAM_PGA_PGA_CONTROL PGA_CURRENT_ZONE"},
};

class ProfileRules : public ::testing::TestWithParam<Row> {
protected:
    ProfileRules() {
        camera->useVirtualTime();
        pauseFor.replace([this](std::chrono::milliseconds time) { camera->advanceTime(int(time.count())); });
    }
    ~ProfileRules() override { pauseFor.replace({}); }

    [[nodiscard]] std::vector<RegisterEntry> storedEntries(uint8_t type) const {
        EepromShare const eeprom = HeadboardEepromCreate(camera->handle());
        std::vector<uint8_t> record(8192);
        EXPECT_GT(EepromReadNth(*eeprom, type, "rules", 0, record), 0);
        std::vector<RegisterEntry> entries;
        for (RegisterEntry entry; EepromGetEntry(*eeprom, record, int(entries.size()), entry) == kEepromOk;)
            entries.push_back(entry);
        return entries;
    }
    [[nodiscard]] bool isOf(RegisterEntry const& entry, QString const& name) const {
        vy_RegisterDescription const* const reg = vy_FindRegister(camera->handle(), qPrintable(name));
        EXPECT_TRUE(reg) << "the sensor lacks " << qPrintable(name);
        // A sensor register of an unpaged sensor is stored without its page.
        return reg && entry.address == reg->address && entry.registerClass == reg->addressSpace &&
               (entry.registerClass == 0 || entry.id == reg->id);
    }

    Camera const camera = openProfile(GetParam().profile);
};

TEST_P(ProfileRules, AreKeptOnAWholeCameraAndGiveTheSamePictureAfterAStart) {
    Row const& row = GetParam();
    uint32_t value = 0x2800; // 1/32 as binary16, and a little more for each coefficient
    bool const hasBase = !row.passedOver.contains("P_GR_P0Q0");
    for (std::string const& name : shadingRegisterNames())
        if (((hasBase && name.starts_with("P_")) || name.find("_DATA_") != std::string::npos) &&
            vy_ExistsRegister(camera->handle(), name.c_str()))
            writeRegister(*camera, name.c_str(), ++value);
    switchCorrection(*camera, true);
    // Both records go through the sensor's own EEPROM, so that it must lie where its kind is looked for.
    EepromShare const eeprom = HeadboardEepromCreate(camera->handle());
    EXPECT_EQ(eeprom->deviceAddress, row.deviceAddress);
    EXPECT_EQ(EepromFormat(*eeprom, -1), kEepromOk);
    EXPECT_EQ(saveShadingRegisters(*eeprom, "rules", {}), kEepromOk);
    EXPECT_EQ(saveCcmRegisters(*eeprom, "rules"), kEepromOk);
    EXPECT_EQ(HeadboardEepromFlush(*eeprom), kEepromOk);

    std::vector<RegisterEntry> entries = storedEntries(kRecordPga);
    auto const holds = [&](QString const& name) {
        return std::ranges::any_of(entries, [&](RegisterEntry const& entry) { return isOf(entry, name); });
    };
    for (QString const& name : row.passedOver.split(' ', Qt::SkipEmptyParts))
        EXPECT_FALSE(holds(name)) << qPrintable(name);
    std::ranges::copy(storedEntries(kRecordCcm), std::back_inserter(entries));
    for (QString const& name : row.alsoStored.split(' ', Qt::SkipEmptyParts))
        EXPECT_TRUE(holds(name)) << qPrintable(name);

    Camera const started = openProfile(row.profile), reset = openProfile(row.profile);
    programContents(*started, camera->eepromBytes());
    QString error;
    ASSERT_TRUE(started->replayEeprom(QStringLiteral("rules"), &error)) << qPrintable(error);
    for (double const kelvin : {2800.0, 4900.0}) {
        for (Camera const* each : {&camera, &started, &reset})
            (*each)->setLight({.colourTemperature = kelvin});
        QByteArray const stored = camera->grab().pixels;
        EXPECT_TRUE(started->grab().pixels == stored) << kelvin;
        EXPECT_FALSE(reset->grab().pixels == stored) << kelvin;
    }
}

INSTANTIATE_TEST_SUITE_P(Headboard, ProfileRules, ::testing::ValuesIn(kRows), [](auto const& test) {
    std::string name = test.param.profile;
    std::erase(name, '-');
    return name;
});
} // namespace
