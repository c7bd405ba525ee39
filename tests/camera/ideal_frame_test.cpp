#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

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
            for (uint32_t y = 0; y < told.height; ++y)
                for (uint32_t x = 0; x < told.width; ++x) {
                    double const counts =
                        told.blackLevel + double(ideal.samples[size_t(y) * told.width + x]) *
                                              (told.whiteLevel - told.blackLevel);
                    double const error = sampleAt(frame, x, y) - counts;
                    difference += error / double(ideal.samples.size());
                    largest = std::max(largest, std::abs(error));
                }
            EXPECT_NEAR(difference, 0, 0.1);
            EXPECT_LT(largest, 60);
        }
}

TEST(IdealFrame, LeavesTheNoiseOfTheNextFrameAlone) {
    Camera const asked = openQuiet(), left = openQuiet();
    (void)asked->idealFrame();
    EXPECT_EQ(asked->grab().pixels, left->grab().pixels);
}

} // namespace
