#include "tests/support/camera_under_test.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace simulator;

namespace {
constexpr Region kMiddle{45, 45, 55, 55};

// Photon noise: the variance in electrons is the signal in electrons plus that of the amplifier.
TEST(Frame, VarianceIsThatOfPhotonsAndAmplifierAndTheSignalIsLinear) {
    Camera const camera = openChanged("{\"readOut\": {\"electronsPerCount\": 2, \"readNoise\": 8}}");
    for (uint32_t const exposure : {100U, 1000U}) {
        writeRegister(*camera, "COARSE_INTEGRATION_TIME", exposure);
        Frame const one = camera->grab();
        Frame const other = camera->grab();
        double squares = 0, sum = 0, count = 0;
        for (uint32_t y = 500; y < 560; y += 2)
            for (uint32_t x = 901; x < 1000; x += 2, ++count) {
                squares += std::pow(sampleAt(one, x, y) - sampleAt(other, x, y), 2) / 2;
                sum += sampleAt(one, x, y) - camera->description().blackLevel;
            }
        EXPECT_NEAR(sum / count / (0.2 * 3935 * exposure / 400), 1, 0.05)
            << "of full scale at the reset value";
        double const expected = sum / count / 2 + 8.0 * 8.0 / 4; // counts
        EXPECT_NEAR(squares / count / expected, 1, 0.1) << exposure;
    }
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
    Camera const camera = openProfile("unusable-rows-33");
    camera->setLight({.level = 0});
    Frame const frame = camera->grab();
    for (uint32_t y = 0; y < 3; ++y) {
        double brightest = 0;
        for (uint32_t x = 0; x < frame.width; ++x)
            brightest = std::max(brightest, sampleAt(frame, x, y));
        EXPECT_EQ(brightest > 1000, y < 2) << y;
    }
}
} // namespace
