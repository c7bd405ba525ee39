#include "tests/support/camera_under_test.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace simulator;

namespace {
constexpr Region kMiddle{45, 45, 55, 55};

// Photon noise: the variance in electrons is the signal in electrons plus that of the amplifier.
TEST(Frame, VarianceIsThatOfPhotonsAndAmplifier) {
    Camera const camera = openChanged("{\"readOut\": {\"electronsPerCount\": 2, \"readNoise\": 8}}");
    for (uint32_t const exposure : {100U, 1000U}) {
        writeRegister(*camera, "COARSE_INTEGRATION_TIME", exposure);
        Frame const one = camera->grab();
        Frame const other = camera->grab();
        double squares = 0;
        double sum = 0;
        double count = 0;
        for (uint32_t y = 500; y < 560; y += 2)
            for (uint32_t x = 901; x < 1000; x += 2, ++count) {
                squares += std::pow(sampleAt(one, x, y) - sampleAt(other, x, y), 2) / 2;
                sum += sampleAt(one, x, y) - camera->description().blackLevel;
            }
        double const expected = sum / count / 2 + 8.0 * 8.0 / 4; // counts
        EXPECT_NEAR(squares / count / expected, 1, 0.1) << exposure;
    }
}

TEST(Frame, SignalIsLinearInExposureAndLampAndClipsAtWhite) {
    Camera const camera = openQuiet();
    double const reference = greenMean(*camera, camera->grab(), kMiddle);
    writeRegister(*camera, "COARSE_INTEGRATION_TIME", 800);
    EXPECT_NEAR(greenMean(*camera, camera->grab(), kMiddle) / reference, 2, 0.01);
    camera->setLight({.level = 0.5});
    EXPECT_NEAR(greenMean(*camera, camera->grab(), kMiddle) / reference, 1, 0.01);
    writeRegister(*camera, "COARSE_INTEGRATION_TIME", 40000);
    Frame const bright = camera->grab();
    EXPECT_EQ(sampleAt(bright, 161, 120), camera->description().whiteLevel);
}

TEST(Frame, LampColourRampAndObjectReachThePicture) {
    Camera const camera = openQuiet(0, 1); // mirrored: the ramp is the picture's, not the array's
    Frame const plain = camera->grab();
    double const daylight = redMean(*camera, plain, kMiddle) / greenMean(*camera, plain, kMiddle);
    camera->setLight({.colourTemperature = 2500, .gradient = 0.2, .objectInPicture = true});
    Frame const lit = camera->grab();
    EXPECT_GT(redMean(*camera, lit, kMiddle) / greenMean(*camera, lit, kMiddle), 1.3 * daylight);
    auto const ratio = [&](Region const& region) {
        return greenMean(*camera, lit, region) / greenMean(*camera, plain, region);
    };
    EXPECT_NEAR(ratio({96, 80, 100, 100}) - ratio({0, 80, 4, 100}), 0.2, 0.02);
    EXPECT_LT(ratio({60, 38, 64, 42}), 0.3);
}

TEST(Frame, UnusableRowsHoldNoPicture) {
    Camera const camera = openProfile("kind33");
    camera->setLight({.level = 0});
    Frame const frame = camera->grab();
    double brightest[3] = {};
    for (uint32_t y = 0; y < 3; ++y)
        for (uint32_t x = 0; x < frame.width; ++x)
            brightest[y] = std::max(brightest[y], sampleAt(frame, x, y));
    EXPECT_GT(std::min(brightest[0], brightest[1]), 1000);
    EXPECT_LT(brightest[2], 200);
}

TEST(IdealFrame, LiesInTheMiddleOfTheNoiseInEveryReadOutOrder) {
    for (uint32_t orientation = 0; orientation < 4; ++orientation)
        for (bool const isCorrecting : {false, true}) {
            SCOPED_TRACE(testing::Message() << "orientation " << orientation << ", " << isCorrecting);
            Camera const camera = openQuiet(1, orientation);
            writeRegister(*camera, "P_GR_P0Q0", 0x3E00); // 1.5
            writeRegister(*camera, "POLY_SC_ENABLE", isCorrecting, "ENABLE");
            ASSERT_EQ(camera->isCorrecting(), isCorrecting);
            CameraDescription const& told = camera->description();
            IdealFrame const ideal = camera->idealFrame();
            ASSERT_EQ(ideal.samples.size(), size_t(told.width) * told.height);
            double difference = 0, largest = 0;
            Frame const frame = camera->grab();
            for (uint32_t i = 0; i < ideal.samples.size(); ++i) {
                double const light = double(ideal.samples[i]) * (told.whiteLevel - told.blackLevel);
                double const error =
                    sampleAt(frame, i % told.width, i / told.width) - told.blackLevel - light;
                difference += error / double(ideal.samples.size());
                largest = std::max(largest, std::abs(error));
            }
            EXPECT_NEAR(difference, 0, 0.1);
            EXPECT_LT(largest, 60);
        }
}
} // namespace
