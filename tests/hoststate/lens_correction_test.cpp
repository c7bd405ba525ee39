#include "hoststate/pipeline.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {
struct LensCorrectionSwitch : ::testing::Test {
    FakeHost fakeHost;
    FakeLibraries fake;
    Host const host{fakeHost.services()};
    Sensor const sensor{fake.camera()};
};

TEST_F(LensCorrectionSwitch, IsThatOfItsKindOnEachPage) {
    constexpr char kShading[] = "COLOR_PIPELINE_CONTROL.LENS_SHADING";
    constexpr char kPga[] = "COLOR_PIPELINE_CONTROL.PGA_ENABLE";
    constexpr char kCamPga[] = "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE";
    constexpr char kControl[] = "LENS_CORRECTION_CONTROL.ENABLE";
    constexpr char kCorrection[] = "LENS_CORRECTION.ENABLE";
    constexpr char kPoly[] = "POLY_SC_ENABLE.ENABLE";
    using Row = std::tuple<uint32_t, bool, char const*, char const*, bool>;
    for (auto const& [kind, systemOnChip, lensShading, apga, asksTheLibrary] :
         {Row{16, false, kShading, kShading, false}, Row{23, true, kShading, kShading, false},
          Row{22, false, kControl, kControl, false}, Row{40, false, kControl, kControl, false},
          Row{25, false, kCorrection, kCorrection, false}, Row{27, false, kCorrection, kCorrection, false},
          Row{95, true, kCamPga, kCamPga, false}, Row{115, true, kCamPga, kCamPga, false},
          Row{72, false, kPoly, kCamPga, true}, Row{76, true, kPga, kCamPga, true},
          Row{154, false, "POLY_SC_ENABLE.", kPoly, false}, Row{68, true, kPga, kPga, true},
          Row{200, false, kPoly, kPoly, true}}) {
        auto const chosen = [&, &itsKind = kind](PageKind page) {
            LensCorrection const found = chooseLensCorrection(page, sensorKind(itsKind, 1), sensor);
            return std::string(found.lensCorrectionRegister) + '.' + found.lensCorrectionBitfield;
        };
        fake.systemOnChip = systemOnChip;
        fakeHost.log.clear();
        EXPECT_EQ(chosen(PageKind::LensShading), lensShading) << kind;
        EXPECT_EQ(!fakeHost.log.empty(), asksTheLibrary) << kind;
        EXPECT_EQ(chosen(PageKind::Apga), apga) << kind;
    }
}

TEST_F(LensCorrectionSwitch, WithoutItsBitfieldTheSensorIsLeftAlone) {
    LensCorrection const correction{"POLY_SC_ENABLE", "ENABLE"};
    setLensCorrection(host, sensor, correction, true);
    fakeHost.registers["POLY_SC_ENABLE.ENABLE"] = 1;
    EXPECT_FALSE(lensCorrectionEnabled(host, sensor, correction));
    setLensCorrection(host, Sensor(nullptr), correction, true);
    EXPECT_EQ(fakeHost.log, Calls(2, "existsBitfield POLY_SC_ENABLE ENABLE"));
}

TEST_F(LensCorrectionSwitch, OfAWholeRegisterIsItsHighBit) {
    LensCorrection const correction{"POLY_SC_ENABLE", ""};
    setLensCorrection(host, sensor, correction, true);
    EXPECT_TRUE(lensCorrectionEnabled(host, sensor, correction));
    setLensCorrection(host, sensor, correction, false);
    EXPECT_EQ(fakeHost.log,
              (Calls{"begin", "writeRegister POLY_SC_ENABLE  32768", "end", "readRegister POLY_SC_ENABLE  1",
                     "begin", "writeRegister POLY_SC_ENABLE  0", "end"}));
}
} // namespace
