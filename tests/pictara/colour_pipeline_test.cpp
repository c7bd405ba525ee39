#include "simulator/pictures/colour_pipeline.h"
#include "simulator/pictures/linear_rows.h"
#include "tests/pictara/test_frames.h"

#include <gtest/gtest.h>
#include <limits>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;

// A flat scene in counts: red 20 %, green 50 %, blue 80 % of full scale.
double flatScene(Site site, uint32_t, uint32_t) {
    return site == Site::Red ? 300 : site == Site::Green ? 600 : 900;
}

QImage rendered(CameraDescription const& camera, Frame const& frame, ColourSettings const& settings = {}) {
    QImage picture;
    ColourPipeline(camera).render(frame, settings, picture);
    return picture;
}

TEST(ColourPipeline, ColoursComeOutRightAtEveryPixelInEveryPhase) {
    for (uint32_t phase = 0; phase < 4; ++phase) {
        CameraDescription const camera = bayerCamera(7, 5, phase);
        QImage const picture = rendered(camera, bayerFrame(camera, flatScene));
        ASSERT_EQ(picture.size(), QSize(7, 5));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 7; ++x)
                ASSERT_EQ(picture.pixel(x, y), qRgb(51, 128, 204)) << phase << " at " << x << ',' << y;
    }
}

TEST(ColourPipeline, GainsMatrixAndSaturationActInThisOrder) {
    CameraDescription camera = bayerCamera(4, 4);
    double const matrix[9] = {1.5, -0.5, 0, -0.25, 1.5, -0.25, 0, -0.5, 1.5};
    std::copy(std::begin(matrix), std::end(matrix), camera.colourMatrix.begin());
    Frame const frame = bayerFrame(camera, flatScene);
    auto const firstPixel = [&](ColourSettings const& settings) {
        std::array<double, 3> pixel{};
        readLinear(frame, camera, settings, [&](uint32_t y, ColourRow const& row) {
            if (y == 0)
                pixel = {row.red[0], row.green[0], row.blue[0]};
        });
        return pixel;
    };
    auto const expectPixel = [&](ColourSettings const& settings, double red, double green, double blue) {
        auto const pixel = firstPixel(settings);
        EXPECT_NEAR(pixel[0], red, 1e-5);
        EXPECT_NEAR(pixel[1], green, 1e-5);
        EXPECT_NEAR(pixel[2], blue, 1e-5);
    };
    expectPixel({.redGain = 2, .blueGain = 0.5}, 0.4, 0.5, 0.4);
    expectPixel({.redGain = 2, .blueGain = 0.5, .colourCorrection = true}, 0.35, 0.55, 0.35);
    double const grey = 0.2126 * 0.35 + 0.7152 * 0.55 + 0.0722 * 0.35;
    expectPixel({.redGain = 2, .blueGain = 0.5, .colourCorrection = true, .saturation = 0}, grey, grey, grey);
}

TEST(ToneCurve, FollowsExponentBlackAndContrast) {
    EXPECT_EQ(ToneCurve({})(0.5F), 128);
    EXPECT_EQ(ToneCurve({.displayExponent = 0.45})(0.2F), 124); // 255 * 0.2 ^ 0.45
    EXPECT_EQ(ToneCurve({.blackLift = 0.1})(0.1F), 0);
    EXPECT_EQ(ToneCurve({.blackLift = 0.1})(0.55F), 128);
    EXPECT_EQ(ToneCurve({.contrast = 2})(0.6F), 179);
    for (float const light : {-1.0F, std::numeric_limits<float>::quiet_NaN(), -1e30F})
        EXPECT_EQ(ToneCurve({})(light), 0);
    for (float const light : {1.0F, 2.0F, 1e30F})
        EXPECT_EQ(ToneCurve({})(light), 255);
}

TEST(ColourPipeline, YcbcrOfBothRangesComesOutLinear) {
    struct {
        double black, white;
        uint8_t luma, cr;
    } const ranges[] = {{0, 255, 102, 164}, {16, 235, 104, 160}}; // 40 % luma, red difference of 0.142
    for (auto const& range : ranges) {
        CameraDescription camera = bayerCamera(4, 2);
        camera.rawType = simulator::FrameType::Ycbcr;
        camera.blackLevel = range.black;
        camera.whiteLevel = range.white;
        Frame frame{simulator::FrameType::Ycbcr, 4, 2, 8, {}};
        for (int pair = 0; pair < 4; ++pair)
            for (uint8_t const byte : {range.luma, uint8_t(128), range.luma, range.cr})
                frame.pixels.append(char(byte));
        QRgb const pixel = rendered(camera, frame).pixel(3, 1);
        EXPECT_NEAR(qRed(pixel), 152.5, 2);
        EXPECT_NEAR(qGreen(pixel), 76.5, 2);
        EXPECT_NEAR(qBlue(pixel), 102, 2);
    }
}

TEST(ColourPipeline, AFrameShorterThanItSaysIsNotTouched) {
    CameraDescription const camera = bayerCamera(8, 8);
    Frame const whole = bayerFrame(camera, flatScene);
    EXPECT_FALSE(rendered(camera, whole).isNull());
    Frame broken = whole;
    broken.pixels.chop(7); // the spare bytes of the last row may be missing, a sample may not
    EXPECT_TRUE(rendered(camera, broken).isNull());
    broken = whole;
    broken.pitch = 15;
    EXPECT_TRUE(rendered(camera, broken).isNull());
    broken = whole;
    broken.height = -8;
    EXPECT_TRUE(rendered(camera, broken).isNull());
}
} // namespace
} // namespace pictara
