#include "hoststate/pipeline.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {
TEST(LensCorrection, EveryKindHasItsSwitchOnEachPage) {
    using Row = std::tuple<uint32_t, bool, char const*, char const*, bool>;
    constexpr char const* kShading = "COLOR_PIPELINE_CONTROL.LENS_SHADING";
    constexpr char const* kPga = "COLOR_PIPELINE_CONTROL.PGA_ENABLE";
    constexpr char const* kCamPga = "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE";
    constexpr char const* kControl = "LENS_CORRECTION_CONTROL.ENABLE";
    constexpr char const* kCorrection = "LENS_CORRECTION.ENABLE";
    constexpr char const* kPoly = "POLY_SC_ENABLE.ENABLE";
    Row const rows[] = {
        {16, false, kShading, kShading, false},
        {23, true, kShading, kShading, false},
        {22, false, kControl, kControl, false},
        {40, false, kControl, kControl, false},
        {25, false, kCorrection, kCorrection, false},
        {27, false, kCorrection, kCorrection, false},
        {95, true, kCamPga, kCamPga, false},
        {115, true, kCamPga, kCamPga, false},
        {72, false, kPoly, kCamPga, true},
        {76, true, kPga, kCamPga, true},
        {154, false, "POLY_SC_ENABLE.", kPoly, false},
        {68, true, kPga, kPga, true},
        {200, false, kPoly, kPoly, true},
    };
    FakeHost host;
    FakeLibraries fake;
    auto const chosen = [&](PageKind page, uint32_t kindOfSensor) {
        LensCorrection const correction =
            chooseLensCorrection(page, sensorKind(kindOfSensor, 1), Sensor(fake.camera()));
        return std::string(correction.lensCorrectionRegister) + '.' + correction.lensCorrectionBitfield;
    };
    for (auto const& [kind, systemOnChip, lensShading, apga, asksTheLibrary] : rows) {
        fake.systemOnChip = systemOnChip;
        host.log.clear();
        EXPECT_EQ(chosen(PageKind::LensShading, kind), lensShading) << kind;
        EXPECT_EQ(!host.log.empty(), asksTheLibrary) << kind;
        EXPECT_EQ(chosen(PageKind::Apga, kind), apga) << kind;
    }
}

TEST(LensCorrection, AMissingBitfieldLeavesTheSensorAlone) {
    FakeHost fakeHost;
    FakeLibraries fake;
    Host const host(fakeHost.services());
    LensCorrection const correction{"POLY_SC_ENABLE", "ENABLE"};
    setLensCorrection(host, Sensor(fake.camera()), correction, true);
    fakeHost.registers["POLY_SC_ENABLE.ENABLE"] = 1;
    EXPECT_FALSE(lensCorrectionEnabled(host, Sensor(fake.camera()), correction));
    setLensCorrection(host, Sensor(nullptr), correction, true);
    EXPECT_EQ(fakeHost.log, std::vector<std::string>(2, "existsBitfield POLY_SC_ENABLE ENABLE"));
}

TEST(LensCorrection, AWholeRegisterIsSwitchedByItsHighBit) {
    FakeHost fakeHost;
    FakeLibraries fake;
    Host const host(fakeHost.services());
    LensCorrection const correction{"POLY_SC_ENABLE", ""};
    setLensCorrection(host, Sensor(fake.camera()), correction, true);
    EXPECT_TRUE(lensCorrectionEnabled(host, Sensor(fake.camera()), correction));
    setLensCorrection(host, Sensor(fake.camera()), correction, false);
    EXPECT_EQ(fakeHost.log, (std::vector<std::string>{"begin", "writeRegister POLY_SC_ENABLE  32768", "end",
                                                      "readRegister POLY_SC_ENABLE  1", "begin",
                                                      "writeRegister POLY_SC_ENABLE  0", "end"}));
}
} // namespace
