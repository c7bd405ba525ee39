#include "common/libraries.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_content.h"
#include "headboard/record_types.h"
#include "headboard/register_record.h"
#include "simulator/camera/simulated_camera.h"

#include <algorithm>
#include <gtest/gtest.h>

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

std::vector<Row> const& rows() {
    static std::vector<Row> const all = {
        {"kind95", 0xAA, {{"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE", 1}}, {}, {}},
        {"kind198", 0xAC, {}, {}, {}},
        {"kind68-1",
         0xA8,
         {{"SEQUENCERSETUP_MANUALOBJ", "", 339},
          {"SEQUENCERSETUP_CMD", "", 255},
          {"SEQUENCERSETUP_MANUALOBJ", "", 595},
          {"SEQUENCERSETUP_CMD", "", 255},
          {"SEQUENCERSETUP_MANUALOBJ", "", 851},
          {"SEQUENCERSETUP_CMD", "", 255},
          {"PGASETUP_MODE", "", 1},
          {"SEQUENCERSETUP_MANUALOBJ", "", 338},
          {"SEQUENCERSETUP_CMD", "", 255},
          {nullptr, nullptr, 1}},
         {"P_GR_Q5", "P_RD_Q5", "PGASETUP_LEFT_COLORTEMP", "PGASETUP_RIGHT_BLUEQ14"},
         {"P_CR_Q5", "P_CB_Q5"}},
        {"kind68-2", 0xA8, {{"PGAOUTPUT_CURZONE", "", 4}, {nullptr, nullptr, 1}}, {"P_BL_Q5"}, {}},
        {"kind76-2",
         0xA8,
         {{"CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 1},
          {nullptr, nullptr, 1},
          {"PGA_CURRENT_ZONE", "", 255}},
         {"P_GR_P0Q0", "CENTER_ROW", "CENTER_COLUMN"},
         {"PGA_TABLE_A_DATA_0"}},
    };
    return all;
}

class ProfileRules : public ::testing::TestWithParam<Row> {
protected:
    void SetUp() override {
        Veyra2 library;
        library.vy_ExistsRegister = vy_ExistsRegister;
        library.vy_ExistsBitfield = vy_ExistsBitfield;
        library.vy_FindRegister = vy_FindRegister;
        library.vy_FindBitfield = vy_FindBitfield;
        library.vy_FindRegisterAddr = vy_FindRegisterAddr;
        library.vy_dataSize = vy_dataSize;
        library.vy_ReadSensorRegStr = vy_ReadSensorRegStr;
        library.vy_WriteSensorRegStr = vy_WriteSensorRegStr;
        library.vy_SensorInfo = vy_SensorInfo;
        installVeyra2(library);
        QString error;
        camera = simulator::SimulatedCamera::open(QString::fromLatin1(GetParam().profile), &error);
        ASSERT_TRUE(camera) << qPrintable(error);
    }
    void TearDown() override { installVeyra2({}); }

    [[nodiscard]] std::vector<RegisterEntry> storedEntries() const {
        HeadboardEeprom const eeprom = HeadboardEepromCreate(camera->handle());
        EXPECT_EQ(eeprom->deviceAddress, GetParam().deviceAddress);
        eeprom->image.assign(size_t(eeprom->deviceSize), 0xFF);
        eeprom->state.assign(eeprom->image.size(), ByteState::Current);
        EXPECT_EQ(EepromFormat(eeprom, -1), kEepromOk);
        EXPECT_EQ(saveShadingRegisters(eeprom, "rules", {}), kEepromOk);
        std::vector<uint8_t> record(eeprom->image.size());
        EXPECT_GT(EepromReadNth(eeprom, kRecordPga, "rules", 0, record), 0);
        std::vector<RegisterEntry> entries;
        RegisterEntry entry{};
        for (int n = 0; EepromGetEntry(eeprom, record, n, entry) == kEepromOk; ++n)
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

    std::unique_ptr<simulator::SimulatedCamera> camera;
};

TEST_P(ProfileRules, AreKeptOnAWholeCamera) {
    std::vector<RegisterEntry> const entries = storedEntries();
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
    for (char const* const name : GetParam().alsoStored)
        EXPECT_TRUE(holds(entries, name)) << name;
}

INSTANTIATE_TEST_SUITE_P(Headboard, ProfileRules, ::testing::ValuesIn(rows()), [](auto const& test) {
    std::string name = test.param.profile;
    std::erase(name, '-');
    return name;
});

} // namespace
