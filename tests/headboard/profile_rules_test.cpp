#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_names.h"
#include "headboard/register_record.h"
#include "headboard/register_set.h"
#include "tests/support/camera_under_test.h"
#include "tests/support/linked_library.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>

using namespace kestra;

// The simulated sensors meet the rules that only few kinds of sensors do, so that a rule that was lost is
// noticed on a whole camera and not only on a register map made for its test.

namespace {
struct Stored {
    char const* reg;
    char const* bitfield;
    uint32_t value;
};

struct Row {
    char const* profile;
    uint32_t deviceAddress;
    std::vector<Stored> tail;            ///< the last entries of the record, in order
    std::vector<char const*> passedOver; ///< registers that the sensor has and the record has not
    std::vector<char const*> alsoStored; ///< registers that must not be passed over with them
};

// By name, not by bytes, some of which nobody sets.
void PrintTo(Row const& row, std::ostream* out) { *out << row.profile; }

// The sequencer loads each of the three tables before anything else.
std::vector<Stored> behindTheTables(std::vector<Stored> const& last) {
    std::vector<Stored> tail;
    for (uint32_t const table : {339U, 595U, 851U})
        tail.insert(tail.end(), {{"SEQUENCERSETUP_MANUALOBJ", "", table}, {"SEQUENCERSETUP_CMD", "", 255}});
    tail.insert(tail.end(), last.begin(), last.end());
    return tail;
}

std::vector<Row> const& rows() {
    constexpr Stored kPgaOn{"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE", 1};
    constexpr Stored kSwitchOn{nullptr, nullptr, 1}; // whichever register switches the correction
    static std::vector<Row> const all = {
        {"lens-zones-22",
         0xA8,
         {kSwitchOn},
         {},
         {"ZONE_BOUNDS_X1_X2", "ZONE_X6Y6", "SECOND_DERIV_ZONE_7_GREEN2", "DF_DY_RED",
          "K_FACTOR_IN_K_FX_FY_G2_BR", "LENS_K_FACTOR_G1_Q3", "CF_34_B", "CORNER_FACTOR_CONTROL"}},
        {"firmware-switch-95", 0xAA, {kPgaOn}, {}, {"CAM_PGA_R_CONFIG_BLUE_Q14"}},
        {"soc-bus-master-111", 0xA8, {kSwitchOn}, {}, {"AWB_CCM_RL_10"}},
        {"companion-198", 0xAC, {}, {}, {"P_CB_P4Q4", "P_GB_Q5"}},
        {"three-tables-68",
         0xA8,
         behindTheTables({{"PGASETUP_MODE", "", 1},
                          {"SEQUENCERSETUP_MANUALOBJ", "", 338},
                          {"SEQUENCERSETUP_CMD", "", 255},
                          kSwitchOn}),
         {"P_GR_Q5", "P_RD_Q5", "PGASETUP_LEFT_COLORTEMP", "PGASETUP_RIGHT_BLUEQ14"},
         {"P_CR_Q5", "P_CB_Q5"}},
        {"zone-tables-68",
         0xA8,
         behindTheTables({{"PGAOUTPUT_CURZONE", "", 4}, kSwitchOn}),
         {"P_BL_Q5"},
         {"PGATABLECWF_DATA_099"}},
        {"adaptive-72", 0xA8, {kPgaOn}, {}, {"CAM_AWB_CCM_R_CTEMP", "CAM_AWB_CCM_L_BG_GAIN"}},
        {"adaptive-72-flipped", 0xA8, {kPgaOn}, {}, {}},
        {"adaptive-76", 0xA8, {kPgaOn}, {}, {"P_GR_P0Q0", "CENTER_ROW", "PGA_TABLE_D65_CENTER_COLUMN"}},
        {"automatic-76",
         0xA8,
         {{"CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 1}, kSwitchOn, {"PGA_CURRENT_ZONE", "", 255}},
         {"P_GR_P0Q0", "CENTER_ROW", "CENTER_COLUMN"},
         {"PGA_TABLE_A_DATA_0"}},
    };
    return all;
}

class ProfileRules : public ::testing::TestWithParam<Row> {
protected:
    void SetUp() override {
        installVeyra2(linkedLibrary());
        ASSERT_TRUE(camera);
        camera->useVirtualTime();
        pauseFor.replace([this](std::chrono::milliseconds time) { camera->advanceTime(int(time.count())); });
    }
    void TearDown() override {
        pauseFor.replace({});
        installVeyra2({});
    }

    // Both records go through the sensor's own EEPROM, so that it must lie where its kind is looked for.
    void store() const {
        EepromShare const eeprom = HeadboardEepromCreate(camera->handle());
        EXPECT_EQ(eeprom->deviceAddress, GetParam().deviceAddress);
        EXPECT_EQ(EepromFormat(*eeprom, -1), kEepromOk);
        EXPECT_EQ(saveShadingRegisters(*eeprom, "rules", {}), kEepromOk);
        EXPECT_EQ(saveCcmRegisters(*eeprom, "rules"), kEepromOk);
        EXPECT_EQ(HeadboardEepromFlush(*eeprom), kEepromOk);
    }
    [[nodiscard]] std::vector<RegisterEntry> storedEntries(uint8_t type) const {
        EepromShare const eeprom = HeadboardEepromCreate(camera->handle());
        std::vector<uint8_t> record(8192);
        EXPECT_GT(EepromReadNth(*eeprom, type, "rules", 0, record), 0);
        std::vector<RegisterEntry> entries;
        RegisterEntry entry{};
        for (int n = 0; EepromGetEntry(*eeprom, record, n, entry) == kEepromOk; ++n)
            entries.push_back(entry);
        return entries;
    }
    [[nodiscard]] static bool isOf(RegisterEntry const& entry, vy_RegisterDescription const* reg) {
        // A sensor register of an unpaged sensor is stored without its page.
        return reg && entry.address == reg->address && entry.registerClass == reg->addressSpace &&
               (entry.registerClass == 0 || entry.id == reg->id);
    }
    [[nodiscard]] bool holds(std::vector<RegisterEntry> const& entries, char const* name) const {
        vy_RegisterDescription const* const reg = vy_FindRegister(camera->handle(), name);
        EXPECT_TRUE(reg) << "the sensor lacks " << name;
        return std::ranges::any_of(entries, [&](RegisterEntry const& entry) { return isOf(entry, reg); });
    }

    Camera const camera = openProfile(GetParam().profile);
};

TEST_P(ProfileRules, AreKeptOnAWholeCamera) {
    store();
    std::vector<RegisterEntry> const entries = storedEntries(kRecordPga);
    std::vector<Stored> const& tail = GetParam().tail;
    ASSERT_GE(entries.size(), tail.size() + 10);
    for (size_t i = 0; i < tail.size(); ++i) {
        RegisterEntry const& entry = entries[entries.size() - tail.size() + i];
        EXPECT_EQ(entry.value, tail[i].value) << i;
        if (!tail[i].reg) { // whichever register switches the correction: the same as in front
            EXPECT_EQ(entry.address, entries.front().address);
            EXPECT_EQ(entries.front().value, 0U);
            continue;
        }
        EXPECT_TRUE(isOf(entry, vy_FindRegister(camera->handle(), tail[i].reg))) << tail[i].reg;
        EXPECT_EQ(entry.mask != 0, *tail[i].bitfield != 0) << tail[i].reg;
    }
    for (char const* const name : GetParam().passedOver)
        EXPECT_FALSE(holds(entries, name)) << name;
    std::vector<RegisterEntry> const matrices = storedEntries(kRecordCcm);
    for (char const* const name : GetParam().alsoStored)
        EXPECT_TRUE(holds(entries, name) || holds(matrices, name)) << name;
}

TEST_P(ProfileRules, StoredCorrectionGivesTheSamePictureAfterAStart) {
    bool const hasBase = !std::ranges::count(GetParam().passedOver, std::string_view("P_GR_P0Q0"));
    uint32_t value = 0x2800; // 1/32 as binary16, and a little more for each coefficient
    for (std::string const& name : shadingRegisterNames())
        if (((hasBase && name.starts_with("P_")) || name.find("_DATA_") != std::string::npos) &&
            vy_ExistsRegister(camera->handle(), name.c_str()))
            writeRegister(*camera, name.c_str(), ++value);
    switchCorrection(*camera, true);
    store();
    Camera const started = openProfile(GetParam().profile), reset = openProfile(GetParam().profile);
    programContents(*started, camera->eepromBytes());
    QString error;
    ASSERT_TRUE(started->replayEeprom(QStringLiteral("rules"), &error)) << qPrintable(error);
    for (double const kelvin : {2800.0, 4900.0}) {
        simulator::Light light;
        light.colourTemperature = kelvin;
        for (Camera const* each : {&camera, &started, &reset})
            (*each)->setLight(light);
        QByteArray const stored = camera->grab().pixels;
        EXPECT_TRUE(started->grab().pixels == stored) << kelvin;
        EXPECT_FALSE(reset->grab().pixels == stored) << kelvin;
    }
}

INSTANTIATE_TEST_SUITE_P(Headboard, ProfileRules, ::testing::ValuesIn(rows()), [](auto const& test) {
    std::string name = test.param.profile;
    std::erase(name, '-');
    return name;
});
} // namespace
