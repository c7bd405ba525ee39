#include "hoststate/pipeline.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {
TEST(LensCorrection, EveryKindHasItsSwitchOnEachPage) {
    struct Row {
        uint32_t kind;
        bool systemOnChip;
        char const* lensShading;
        char const* apga;
        bool asksTheLibrary;
    };
    Row const rows[] = {
        {16, false, "COLOR_PIPELINE_CONTROL.LENS_SHADING", "COLOR_PIPELINE_CONTROL.LENS_SHADING", false},
        {23, true, "COLOR_PIPELINE_CONTROL.LENS_SHADING", "COLOR_PIPELINE_CONTROL.LENS_SHADING", false},
        {22, false, "LENS_CORRECTION_CONTROL.ENABLE", "LENS_CORRECTION_CONTROL.ENABLE", false},
        {40, false, "LENS_CORRECTION_CONTROL.ENABLE", "LENS_CORRECTION_CONTROL.ENABLE", false},
        {25, false, "LENS_CORRECTION.ENABLE", "LENS_CORRECTION.ENABLE", false},
        {27, false, "LENS_CORRECTION.ENABLE", "LENS_CORRECTION.ENABLE", false},
        {95, true, "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE", "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE", false},
        {115, true, "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE", "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE",
         false},
        {72, false, "POLY_SC_ENABLE.ENABLE", "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE", true},
        {76, true, "COLOR_PIPELINE_CONTROL.PGA_ENABLE", "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE", true},
        {154, false, "POLY_SC_ENABLE.", "POLY_SC_ENABLE.ENABLE", false},
        {68, true, "COLOR_PIPELINE_CONTROL.PGA_ENABLE", "COLOR_PIPELINE_CONTROL.PGA_ENABLE", true},
        {200, false, "POLY_SC_ENABLE.ENABLE", "POLY_SC_ENABLE.ENABLE", true},
    };
    FakeHost host;
    FakeLibraries fake;
    auto const name = [](LensCorrection const& correction) {
        return std::string(correction.lensCorrectionRegister) + '.' + correction.lensCorrectionBitfield;
    };
    for (Row const& row : rows) {
        fake.systemOnChip = row.systemOnChip;
        host.log.clear();
        EXPECT_EQ(
            name(chooseLensCorrection(PageKind::LensShading, sensorKind(row.kind, 1), Sensor(fake.camera()))),
            row.lensShading)
            << row.kind;
        EXPECT_EQ(!host.log.empty(), row.asksTheLibrary) << row.kind;
        EXPECT_EQ(name(chooseLensCorrection(PageKind::Apga, sensorKind(row.kind, 1), Sensor(fake.camera()))),
                  row.apga)
            << row.kind;
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
