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

TEST_F(Pipeline, RawSwitchesExposureOffFirstAndOnLastAndTheCorrectionOffInsideTheSameBracket) {
    setRawPipeline(used, open, correction, true, true);
    ASSERT_EQ(host.log.size(), 37U);
    EXPECT_EQ(Calls(host.log.begin(), host.log.begin() + 2), (Calls{"begin", "setState Auto Exposure 0"}));
    EXPECT_EQ(Calls(host.log.begin() + 27, host.log.end()),
              (Calls{"setState Lens Sim Enable Poly 0", "setState Relative Red Gain 1000",
                     "setState Relative Blue Gain 1000", "setState Auto Exposure 1",
                     "setState White Balance 0", "existsBitfield POLY_SC_ENABLE ENABLE", "begin",
                     "writeRegister POLY_SC_ENABLE ENABLE 0", "end", "end"}));
    // Everything is switched off but what has a neutral or a measuring value.
    Calls on;
    for (auto const& [variable, value] : host.states)
        if (value != 0)
            on.push_back(variable + ' ' + std::to_string(value));
    EXPECT_EQ(on, (Calls{"Auto Exposure 1", "Auto Exposure Inner Zone 40", "Auto Exposure Outer Zone 40",
                         "Auto Exposure Soft Gain Limit 10", "Auto Exposure Soft Limit 1",
                         "Auto Exposure Software Gain Limit 100", "Auto Exposure Speed 10",
                         "Auto Exposure Stability 1", "Auto Exposure Target 50", "Contrast 20", "Gamma 20",
                         "Relative Blue Gain 1000", "Relative Red Gain 1000", "Saturation 10"}));
}

TEST_F(Pipeline, VerifyUsesNoBracketAndAppliesItsPresetBeforeTheCorrection) {
    writeIni("[Hidden: Lens Calibration Verify]\n");
    setVerifyPipeline(used, open, correction);
    EXPECT_EQ(host.log[3], "setState Gamma 9");
    int32_t sum = 0; // a wrong value anywhere shows here
    for (auto const& [variable, value] : host.states)
        sum += value;
    EXPECT_EQ(sum, 1 + 2 + 10 + 9 + 20 + 5 + 3 + 100 + 100 + 100 + 1 + 1);
    EXPECT_EQ(Calls(host.log.begin() + 13, host.log.end()),
              (Calls{"setState WB Normalize Matrix 1", "readText IniFileName", "readText IniFileName",
                     "applyPreset 0 Hidden: Lens Calibration Verify", "existsBitfield POLY_SC_ENABLE ENABLE",
                     "begin", "writeRegister POLY_SC_ENABLE ENABLE 1", "end"}));
}

TEST_F(Pipeline, PresetsAreTriedInOrderUnderTheirPrefixes) {
    using Row = std::tuple<char const*, char const*, char const*>;
    for (auto const& [ini, setup, verify] :
         {Row{"[Toolbar: Lens Calibration Setup]\n[Toolbar: Lens Calibration Verify]\n",
              "Toolbar: Lens Calibration Setup", nullptr},
          Row{"[toolbar: lens calibration setup]\n[HIDDEN: Lens Calibration Setup]\n",
              "Hidden: Lens Calibration Setup", nullptr},
          Row{"[ lens calibration setup ]\n[Hidden: Lens Calibration Setup]\n[Lens Calibration Verify]\n",
              "Lens Calibration Setup", "Lens Calibration Verify"},
          Row{"", nullptr, nullptr}}) {
        writeIni(ini);
        EXPECT_STREQ(findPreset(used, kSetupPreset), setup) << ini;
        EXPECT_STREQ(findPreset(used, kVerifyPreset), verify) << ini;
    }
    host.textSettings.clear();
    EXPECT_FALSE(presetExists(used, "Lens Calibration Setup"));
}
} // namespace
