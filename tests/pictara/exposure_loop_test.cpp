#include "simulator/host/session/exposure_loop.h"
#include "tests/pictara/test_frames.h"

#include <cmath>
#include <gtest/gtest.h>

namespace pictara {
namespace {
using simulator::CameraDescription;

// A sensor whose green saturates first and whose corners get a third of the light.
simulator::Frame exposed(CameraDescription const& camera, uint32_t time, double lightPerTime) {
    return bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
        double const u = (x + 0.5) / camera.width * 2 - 1, v = (y + 0.5) / camera.height * 2 - 1;
        double const colour = site == Site::Green ? 1 : site == Site::Red ? 0.6 : 0.4;
        double const light = time * lightPerTime * colour * (1 - 0.33 * (u * u + v * v));
        return std::min(camera.blackLevel + 1000 * light, camera.whiteLevel);
    });
}

TEST(ExposureLoop, SettlesWithinTwelveFramesFromAnyStartWithoutClippingAgain) {
    CameraDescription const camera = bayerCamera(64, 48);
    for (double const lightPerTime : {1e-5, 2e-4, 1e-3, 4e-3})
        for (uint32_t const start : {1U, 100U, 1000U, 20000U}) {
            uint32_t time = start;
            bool clippedAgain = false, wasUnclipped = false;
            for (int frame = 0; frame < 12; ++frame) {
                CentreZone const centre = measureCentre(exposed(camera, time, lightPerTime), camera, 40);
                clippedAgain = clippedAgain || (wasUnclipped && centre.peak >= 0.99);
                wasUnclipped = wasUnclipped || centre.peak < 0.99;
                time = nextExposure(time, centre, 0.5);
            }
            CentreZone const centre = measureCentre(exposed(camera, time, lightPerTime), camera, 40);
            EXPECT_NEAR(centre.mean, 0.5, 0.02) << "from " << start << " at " << lightPerTime;
            EXPECT_FALSE(clippedAgain) << "from " << start << " at " << lightPerTime;
            EXPECT_EQ(nextExposure(time, centre, 0.5), time) << "still moving at " << lightPerTime;
        }
}

TEST(ExposureLoop, ATargetBeyondFullScaleDoesNotClip) {
    CameraDescription const camera = bayerCamera(64, 48);
    uint32_t time = 100;
    for (int frame = 0; frame < 12; ++frame)
        time = nextExposure(time, measureCentre(exposed(camera, time, 1e-3), camera, 40), 2.0);
    CentreZone const centre = measureCentre(exposed(camera, time, 1e-3), camera, 40);
    EXPECT_LT(centre.peak, 0.97);
    EXPECT_GT(centre.mean, 0.8);
}
} // namespace
} // namespace pictara
