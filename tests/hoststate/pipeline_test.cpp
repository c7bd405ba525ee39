#include "hoststate/pipeline.h"

#include "tests/support/fake_bench.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {
class Pipeline : public ::testing::Test, protected FakeBench {
protected:
    Pipeline() {
        fake.bitfields = {"POLY_SC_ENABLE.ENABLE"};
        writeIni("");
    }

    FakeLibraries fake;
    Host const used{services};
    Sensor const open{fake.camera()};
    LensCorrection correction{"POLY_SC_ENABLE", "ENABLE"};
};

TEST_F(Pipeline, RawSwitchesExposureOffFirstAndOnLast) {
    setRawPipeline(used, open, correction, true, false);
    auto const sets = host.calls("setState");
    ASSERT_EQ(sets.size(), 29U);
    EXPECT_EQ(sets.front(), "setState Auto Exposure 0");
    EXPECT_EQ(sets[26], "setState Lens Sim Enable Poly 0");
    EXPECT_EQ(sets[27], "setState Auto Exposure 1");
    EXPECT_EQ(sets[28], "setState White Balance 0");
    // Everything is switched off but what has a neutral or a measuring value.
    std::map<std::string, int32_t> on;
    for (auto const& [variable, value] : host.states)
        if (value != 0)
            on[variable] = value;
    EXPECT_EQ(on, (std::map<std::string, int32_t>{{"Saturation", 10},
                                                  {"Gamma", 20},
                                                  {"Contrast", 20},
                                                  {"Auto Exposure", 1},
                                                  {"Auto Exposure Inner Zone", 40},
                                                  {"Auto Exposure Outer Zone", 40},
                                                  {"Auto Exposure Target", 50},
                                                  {"Auto Exposure Stability", 1},
                                                  {"Auto Exposure Speed", 10},
                                                  {"Auto Exposure Soft Limit", 1},
                                                  {"Auto Exposure Soft Gain Limit", 10},
                                                  {"Auto Exposure Software Gain Limit", 100}}));
    EXPECT_EQ(host.calls("setState Relative"), std::vector<std::string>{});
    // The correction is switched off inside the same bracket.
    std::vector<std::string> const tail(host.log.end() - 5, host.log.end());
    EXPECT_EQ(tail, (std::vector<std::string>{"existsBitfield POLY_SC_ENABLE ENABLE", "begin",
                                              "writeRegister POLY_SC_ENABLE ENABLE 0", "end", "end"}));
}

TEST_F(Pipeline, RawResetsTheGainsBetweenTheListAndTheSecondExposureWrite) {
    setRawPipeline(used, open, correction, false, true);
    auto const sets = host.calls("setState");
    ASSERT_EQ(sets.size(), 31U);
    EXPECT_EQ(sets[27], "setState Relative Red Gain 1000");
    EXPECT_EQ(sets[28], "setState Relative Blue Gain 1000");
    EXPECT_EQ(sets[29], "setState Auto Exposure 0");
}

TEST_F(Pipeline, VerifyUsesNoBracketAndAppliesItsPresetBeforeTheCorrection) {
    writeIni("[Hidden: Lens Calibration Verify]\n");
    setVerifyPipeline(used, open, correction);
    EXPECT_EQ(host.calls("setState").size(), 14U);
    EXPECT_EQ(host.log[3], "setState Gamma 9");
    int32_t sum = 0; // a wrong value anywhere shows here
    for (auto const& [variable, value] : host.states)
        sum += value;
    EXPECT_EQ(sum, 1 + 2 + 10 + 9 + 20 + 5 + 3 + 100 + 100 + 100 + 1 + 1);
    EXPECT_EQ(host.log[14], "readText IniFileName");
    EXPECT_EQ(host.log[16], "applyPreset 0 Hidden: Lens Calibration Verify");
    EXPECT_EQ(host.calls("begin").size(), 1U);
    EXPECT_EQ(host.calls("writeRegister").back(), "writeRegister POLY_SC_ENABLE ENABLE 1");
}

TEST_F(Pipeline, PresetsAreTriedInOrderUnderTheirPrefixes) {
    using Row = std::tuple<char const*, char const*, char const*>;
    Row const rows[] = {
        {"[Toolbar: Lens Calibration Setup]\n[Toolbar: Lens Calibration Verify]\n",
         "Toolbar: Lens Calibration Setup", nullptr},
        {"[toolbar: lens calibration setup]\n[HIDDEN: Lens Calibration Setup]\n",
         "Hidden: Lens Calibration Setup", nullptr},
        {"[ lens calibration setup ]\n[Hidden: Lens Calibration Setup]\n[Lens Calibration Verify]\n",
         "Lens Calibration Setup", "Lens Calibration Verify"},
        {"", nullptr, nullptr},
    };
    for (auto const& [ini, setup, verify] : rows) {
        writeIni(ini);
        EXPECT_STREQ(findPreset(used, kSetupPreset), setup) << ini;
        EXPECT_STREQ(findPreset(used, kVerifyPreset), verify) << ini;
    }
    host.textSettings.clear();
    EXPECT_FALSE(presetExists(used, "Lens Calibration Setup"));
}
} // namespace
