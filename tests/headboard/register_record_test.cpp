#include "headboard/register_record.h"

#include "headboard/register_names.h"
#include "tests/headboard/headboard_fixture.h"

#include <set>
#include <sstream>

using namespace kestra;

namespace {
// What is stored and in which order: "NAME=value" or "NAME&mask=value", with blanks between them.
struct RegisterRecord : ::testing::Test, Headboard {
    RegisterRecord() {
        fake.description.registerDataWidth = 8;
        format();
    }
    // Registers with addresses of their own and the values 1, 2, 3 and so on.
    void addRegisters(std::initializer_list<char const*> names) {
        for (char const* const name : names) {
            auto const number = uint32_t(board.registers.size() + 1);
            board.add(name, 0, 0, 0x3000 + 2 * number, 2, number);
        }
    }
    void addEnable(char const* reg, char const* bitfield, bool isOn) {
        addRegisters({reg});
        board.addBitfield(reg, bitfield, 1);
        board.registers[reg].value = isOn;
    }
    void expectStored(char const* name, std::string const& expected, uint8_t type = kRecordPga) {
        std::string stored;
        for (RegisterEntry const& entry : entries(record(find(type, name))))
            stored += (stored.empty() ? "" : " ") + describe(entry);
        EXPECT_EQ(stored, expected);
    }
    void expectSaved(std::string const& expected, SensorModel fallback = {}) {
        ASSERT_EQ(saveShadingRegisters(*eeprom, "N", fallback), kEepromOk);
        expectStored("N", expected);
    }

private:
    std::string describe(RegisterEntry const& entry) const {
        for (auto const& [name, reg] : board.registers) {
            std::string const mask = entry.mask == 0 ? "" : '&' + std::to_string(entry.mask);
            if (reg.description.address == entry.address)
                return name + mask + '=' + std::to_string(entry.value);
        }
        return "unknown";
    }
};

// The borders of the families, and where an index within one has its turn.
void expectNames(std::vector<std::string> const& names, size_t count, std::string const& samples) {
    EXPECT_EQ(names.size(), count);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), count);
    std::istringstream stream(samples);
    size_t place = 0;
    for (std::string name; stream >> place >> name;)
        EXPECT_EQ(names.at(place), name);
}

TEST(RegisterNames, CountsAndSamplesOfEveryFamily) {
    expectNames(shadingRegisterNames(), 1111,
                "0 P_GR_P0Q0 1 P_G1_P0Q0 2 P_CR_P0Q0 3 P_GR_P0Q1 15 P_GR_P1Q0 76 P_R_P0Q0 125 P_BL_P0Q0 "
                "249 P_CB_P4Q4 251 CENTER_ROW 353 PGATABLE_DATA_099 355 PGATABLE_CENTERCOLUMN 357 P_CR_Q5 "
                "371 CAM_PGA_M_CONFIG_BLUE_Q14 377 PGASETUP_LEFT_COLORTEMP 392 LENS_CORRECTION_CONTROL "
                "406 ZONE_X6Y6 418 SECOND_DERIV_ZONE_7_RED 419 K_FACTOR_IN_K_FX_FY_R_TL "
                "426 LENS_K_FACTOR_R_Q3 450 CF_34_G1 467 LENS_K_FACTOR_B_Q0 471 CF_12_G2 494 CF_34_B "
                "495 X2_FACTORS 599 PGATABLEA_CENTERROW 601 PGATABLED65_DATA_000 703 PGATABLECWF_DATA_000 "
                "816 PGA_TABLE_A_DATA_11 907 PGA_TABLE_CWF_DATA_0 1110 PGA_TABLE_D65_CENTER_ROW");
    expectNames(ccmRegisterNames(), 313,
                "10 AWB_CCM_L_10 11 AWB_CCM_RL_0 34 AWB_TG_MAX0 56 PRI_A_CONFIG_AWB_CCM_RL_10 "
                "123 CAM_AWB_CCM_L_0 232 BIN_OFF_CONFIG_AWB_CCM_RL_10 253 CAM_AWB_CCM_M_0 "
                "272 CAM_AWB_CCM_L_BG_GAIN 277 CAM_AWB_CCM_L_CTEMP 307 AWBTRACKCONFIG_CCMDATA_0_RBRATIO "
                "312 AWBTRACKCONFIG_CCMDATA_2_COLORTEMP");
}

TEST_F(RegisterRecord, CorrectionIsOffWhileItsRegistersAreRead) {
    addEnable("LENS_CORRECTION", "ENABLE", true);
    addEnable("POLY_SC_ENABLE", "ENABLE", true); // first in order, so the other one is left alone
    addRegisters({"P_GR_P0Q0", "P_CB_P4Q4", "CENTER_ROW"});
    ASSERT_EQ(saveShadingRegisters(*eeprom, "KestraTune", {}), kEepromOk);
    std::erase_if(host.log, [](std::string const& call) {
        return !call.starts_with("read P") && !call.starts_with("write") && call != "invalidateCache";
    });
    EXPECT_EQ(takeLog(), "read POLY_SC_ENABLE ENABLE; write POLY_SC_ENABLE ENABLE 0; invalidateCache; "
                         "read P_GR_P0Q0 ; read P_CB_P4Q4 ; write POLY_SC_ENABLE ENABLE 1")
        << "the caller flushes";
    expectStored("KestraTu", "POLY_SC_ENABLE&1=0 P_GR_P0Q0=3 P_CB_P4Q4=4 CENTER_ROW=5 "
                             "POLY_SC_ENABLE&1=1");
}

TEST_F(RegisterRecord, SensorIsNotWrittenWhereNothingHasToBeSwitched) {
    addRegisters({"P_GR_P0Q0"});
    expectSaved("P_GR_P0Q0=1");
    addEnable("POLY_SC_ENABLE", "ENABLE", false);
    expectSaved("POLY_SC_ENABLE&1=0 P_GR_P0Q0=1 POLY_SC_ENABLE&1=1");
    EXPECT_TRUE(host.calls("write").empty());
    EXPECT_EQ(host.calls("invalidateCache").size(), 1U);
    EXPECT_EQ(EepromNextRecord(*eeprom, 5), end()) << "the first was replaced";
    eeprom->image[0] = 'X';
    EXPECT_EQ(saveShadingRegisters(*eeprom, "N", {}), kEepromNotFormatted);
    EXPECT_EQ(host.calls("invalidateCache").size(), 1U);
}

// Sensors that have all of these registers are met as whole cameras.
TEST_F(RegisterRecord, Kind68WithoutARegisterStoresWhatDoesNotHangOnIt) {
    addEnable("COLOR_PIPELINE_CONTROL", "PGA_ENABLE", false);
    addRegisters({"P_CR_Q5", "PGASETUP_MODE", "PGAOUTPUT_CURZONE", "SEQUENCERSETUP_CMD"});
    fake.description.sensorKind = 68;
    auto const expect = [&](uint32_t variant, std::string const& tail) {
        fake.description.variant = variant;
        expectSaved("COLOR_PIPELINE_CONTROL&1=0 P_CR_Q5=2 " + tail + "COLOR_PIPELINE_CONTROL&1=1");
    };
    expect(1, "PGASETUP_MODE=1 SEQUENCERSETUP_CMD=255 ");
    expect(2, "PGAOUTPUT_CURZONE=4 ");
    addRegisters({"SEQUENCERSETUP_MANUALOBJ"});
    board.registers.erase("PGASETUP_MODE");
    std::string pairs;
    for (char const* const object : {"339", "595", "851", "338"})
        pairs += std::string("SEQUENCERSETUP_MANUALOBJ=") + object + " SEQUENCERSETUP_CMD=255 ";
    expect(1, pairs);
}

TEST_F(RegisterRecord, HostsRecordTellsTheModelOfASensorWithoutDescription) {
    addEnable("CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", false);
    board.addBitfield("CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE", 2);
    addRegisters({"P_GR_P0Q0", "PGA_TABLE_A_DATA_0", "PGA_CURRENT_ZONE"});
    fake.description.sensorKind = 76;
    fake.description.variant = 1;
    constexpr char kFirst[] = "CAM_PGA_PGA_CONTROL&2=0 ", kLast[] = "CAM_PGA_PGA_CONTROL&2=1";
    expectSaved(kFirst + std::string("P_GR_P0Q0=2 PGA_TABLE_A_DATA_0=3 ") + kLast, {76, 2});
    fake.hasDescription = false;
    expectSaved(kFirst + std::string("PGA_TABLE_A_DATA_0=3 CAM_PGA_PGA_CONTROL&1=1 ") + kLast +
                    " PGA_CURRENT_ZONE=255",
                {76, 2});
}

TEST_F(RegisterRecord, CcmRecordHoldsItsRegistersOnly) {
    addEnable("POLY_SC_ENABLE", "ENABLE", true);
    addRegisters(
        {"AWB_CCM_L_0", "CAM_AWB_CCM_RL_10", "PGA_CURRENT_ZONE", "AWBTRACKCONFIG_CCMDATA_2_COLORTEMP"});
    ASSERT_EQ(saveCcmRegisters(*eeprom, "A very long name"), kEepromOk);
    expectStored("A very l", "AWB_CCM_L_0=2 CAM_AWB_CCM_RL_10=3 AWBTRACKCONFIG_CCMDATA_2_COLORTEMP=5",
                 kRecordCcm);
}

} // namespace
