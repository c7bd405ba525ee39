#include "simulator/files/sensor_layout.h"
#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {
constexpr uint32_t kHalf = 0x3800; // as binary16
constexpr uint32_t kOneAndHalf = 0x3E00;

// Writes as a host does: address and id from the layout block, register found by address.
void writeGreen(Camera const& camera, uint32_t value) {
    QString error;
    auto const layout = parseSensorLayout(
        static_cast<char const*>(vy_SensorInfo(camera->handle())->sensorData), QString(), &error);
    ASSERT_TRUE(layout) << qPrintable(error);
    RegisterPlace const place = layout->banks.front().planes[Plane::GreenRed].first;
    auto const* const found = vy_FindRegisterAddr(camera->handle(), place.address, 0, place.id);
    ASSERT_TRUE(found);
    EXPECT_EQ(vy_WriteSensorReg(camera->handle(), found, value), 0);
}

TEST(Correction, EveryInstalledProfileDeliversWhatItDescribesTimesThePolynomialInItsRegisters) {
    for (QString const& name : SimulatedCamera::profileNames()) {
        SCOPED_TRACE(qPrintable(name));
        Camera const camera = openProfile(name);
        CameraDescription const& told = camera->description();
        EXPECT_FALSE(told.summary.isEmpty());
        Frame const frame = camera->grab();
        EXPECT_EQ(frame.type, told.rawType);
        EXPECT_EQ(frame.pitch, told.width * (frame.type == FrameType::Raw8 ? 1 : 2));
        EXPECT_EQ(uint32_t(frame.pixels.size()), frame.pitch * told.height);
        EXPECT_EQ(vy_SensorInfo(camera->handle())->sensorKind, told.sensorKind);
        if (frame.type == FrameType::Ycbcr)
            continue;
        // Room above for the exposure loop, and light enough to begin with.
        EXPECT_NEAR(greenMean(*camera, frame, {45, 45, 55, 55}) / (told.whiteLevel - told.blackLevel), 0.2,
                    0.02);
        EXPECT_NEAR(correctionAt(camera), 1, 0.01) << "the reset registers change nothing";
        writeGreen(camera, kOneAndHalf);
        EXPECT_NEAR(correctionAt(camera), 1.5, 0.015);
        double const red = redMean(*camera, camera->grab());
        switchCorrection(*camera, false);
        EXPECT_NEAR(redMean(*camera, camera->grab()) / red, 1, 0.01) << "one plane is another's";
    }
}

// The terms u and v are the array's, whatever the direction of the read-out; the origin moves them.
TEST(Correction, TermsFollowTheArrayAndTheOrigin) {
    for (uint32_t orientation = 0; orientation < 4; ++orientation) {
        SCOPED_TRACE(orientation);
        Camera const camera = openQuiet(2, orientation);
        writeRegister(*camera, "P_GR_P1Q0", kHalf);
        // In the middle of a strip two per cent of the picture wide |u| is 0.98.
        double const right = (orientation & 1) != 0 ? -0.49 : 0.49;
        EXPECT_NEAR(correctionAt(camera, {98, 48, 100, 52}), 1 + right, 0.02);
        EXPECT_NEAR(correctionAt(camera, {0, 48, 2, 52}), 1 - right, 0.02);
        writeRegister(*camera, "POLY_ORIGIN_C", 160 + 32); // a fifth of the half-width
        EXPECT_NEAR(correctionAt(camera), 1 - 0.1, 0.02);
    }
}

TEST(Correction, NegativeAndHugeGainsStayWithinTheSamples) {
    Camera const camera = openQuiet();
    double const black = camera->description().blackLevel;
    writeRegister(*camera, "POLY_SC_ENABLE", 1, "ENABLE");
    writeRegister(*camera, "P_GR_P0Q0", 0xFC00); // the pattern of minus infinity
    EXPECT_EQ(sampleAt(camera->grab(), 161, 120), black);
    writeRegister(*camera, "P_GR_P0Q0", 0x7BFF); // the largest value
    EXPECT_EQ(sampleAt(camera->grab(), 161, 120), camera->description().whiteLevel);
    writeRegister(*camera, "P_GR_P0Q0", 0x7E00); // not a number
    EXPECT_EQ(sampleAt(camera->grab(), 161, 120), black);
}

TEST(Correction, OnlyTheSwitchBitSwitches) {
    Camera const camera = openQuiet();
    writeRegister(*camera, "P_GR_P0Q0", kOneAndHalf);
    EXPECT_NEAR(correctionAt(camera), 1.5, 0.01);
    EXPECT_EQ(readRegister(*camera, "POLY_SC_ENABLE"), 0x8000);
    double const on = greenMean(*camera, camera->grab());
    writeRegister(*camera, "POLY_SC_ENABLE", 0x7FFF);
    EXPECT_NEAR(on / greenMean(*camera, camera->grab()), 1.5, 0.01);
    writeRegister(*camera, "POLY_SC_ENABLE", 1, "ENABLE");
    EXPECT_EQ(readRegister(*camera, "POLY_SC_ENABLE"), 0xFFFF);
}
} // namespace
