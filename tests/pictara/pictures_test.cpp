#include "pictures/block_statistics.h"
#include "simulator/host/session/exposure_loop.h"
#include "simulator/pictures/block_report.h"
#include "simulator/pictures/colour_pipeline.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;

// A camera of 12-bit Bayer frames, black at 100 and full scale at 1100 counts.
CameraDescription bayerCamera(uint32_t width, uint32_t height, uint32_t phase = 0) {
    CameraDescription camera;
    camera.width = width;
    camera.height = height;
    camera.bayerPhase = phase;
    camera.blackLevel = 100;
    camera.whiteLevel = 1100;
    return camera;
}

constexpr uint32_t kSpare = 6; // bytes behind each row

enum class Site { Red, Green, Blue };

Site siteOf(CameraDescription const& camera, uint32_t x, uint32_t y) {
    bool const redColumn = ((x ^ camera.bayerPhase) & 1) == 0;
    bool const redRow = ((y ^ camera.bayerPhase >> 1) & 1) == 0;
    if (redColumn != redRow)
        return Site::Green;
    return redRow ? Site::Red : Site::Blue;
}

// A frame of the camera's samples in counts, its rows longer than they need be.
Frame bayerFrame(CameraDescription const& camera,
                 std::function<double(Site, uint32_t x, uint32_t y)> const& counts) {
    Frame frame{FrameType::Raw12, camera.width, int32_t(camera.height), camera.width * 2 + kSpare, {}};
    frame.pixels.fill('\x55', int(frame.pitch * camera.height));
    for (uint32_t y = 0; y < camera.height; ++y)
        for (uint32_t x = 0; x < camera.width; ++x) {
            auto const sample = uint32_t(counts(siteOf(camera, x, y), x, y) + 0.5);
            int const at = int(y * frame.pitch + 2 * x);
            frame.pixels[at] = char(sample & 0xFF);
            frame.pixels[at + 1] = char(sample >> 8);
        }
    return frame;
}

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
    auto const expectPixel = [&](ColourSettings const& settings, double red, double green, double blue) {
        int rows = 0;
        readLinear(frame, camera, settings, [&](uint32_t, ColourRow const& row) {
            ++rows;
            EXPECT_NEAR(row.red[0], red, 1e-5);
            EXPECT_NEAR(row.green[0], green, 1e-5);
            EXPECT_NEAR(row.blue[0], blue, 1e-5);
        });
        EXPECT_EQ(rows, 4);
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
        camera.rawType = FrameType::Ycbcr;
        camera.blackLevel = range.black;
        camera.whiteLevel = range.white;
        Frame frame{FrameType::Ycbcr, 4, 2, 8, {}};
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
    auto const isDrawn = [&](auto damage) {
        Frame frame = bayerFrame(camera, flatScene);
        damage(frame);
        return !rendered(camera, frame).isNull();
    };
    EXPECT_TRUE(isDrawn([](Frame& frame) { frame.pixels.chop(kSpare); })) << "of the last row";
    EXPECT_FALSE(isDrawn([](Frame& frame) { frame.pixels.chop(kSpare + 1); }));
    EXPECT_FALSE(isDrawn([](Frame& frame) { frame.pitch = 15; }));
    EXPECT_FALSE(isDrawn([](Frame& frame) { frame.height = -8; }));
}

TEST(BlockReport, FindsTheDarkBlockAndTheColouredOne) {
    CameraDescription camera = bayerCamera(320, 180);
    auto const dark = bayerFrame(camera, [](Site, uint32_t x, uint32_t y) {
        return x < 10 && y < 10 ? 500.0 : 600.0; // 0.4 of full scale in the first block, 0.5 elsewhere
    });
    BlockReport report = measureBlocks(dark, camera, {});
    EXPECT_NEAR(report.largestAgainstMedian, 0.2, 0.01); // its border is shared with brighter neighbours
    EXPECT_NEAR(report.largestAgainstCentre, 0.2, 0.01);
    EXPECT_NEAR(report.meanAgainstMedian, 0.2 / (32 * 18), 1e-4);
    EXPECT_LT(report.largestColourDeviation, 1);

    // Rows without a picture, of another colour: the block keeps its place, and the row that they tinge is
    // left out.
    for (uint32_t const margin : {0U, 19U}) {
        camera.unusableRows = margin;
        auto const red = bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
            bool const coloured = site == Site::Red && x >= 200 && x < 210 && y >= 100 && y < 110;
            return y < margin ? (site == Site::Red ? 1000.0 : 110.0) : coloured ? 700.0 : 600.0;
        });
        report = measureBlocks(red, camera, {});
        EXPECT_EQ(report.worstBlock, QRect(200, 100, 10, 10));
        EXPECT_GT(report.largestColourDeviation, 5);
        EXPECT_LT(report.deviations.front(), 0.5);
        EXPECT_LT(report.largestAgainstMedian, 0.1);
    }
}

// Colour that changes over the picture, as an uncorrected lens leaves it.
Frame shadedFrame(CameraDescription const& camera) {
    return bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
        double const u = double(x) / camera.width, v = double(y) / camera.height;
        double const gain = site == Site::Red ? 1 - 0.2 * u : site == Site::Blue ? 0.8 + 0.1 * u * v : 1;
        return 100 + 800 * gain * (1 - 0.3 * v);
    });
}

// The host measures light, the dialog what a display makes of it, on other blocks.
TEST(BlockReport, FindsAboutTheColourDeviationThatTheDialogFinds) {
    ColourSettings const settings{.redGain = 1.1, .blueGain = 1.2, .displayExponent = 0.45};
    for (QSize const size : {QSize(320, 240), QSize(331, 217)}) {
        auto const camera = bayerCamera(uint32_t(size.width()), uint32_t(size.height()));
        auto const frame = shadedFrame(camera);
        QImage picture;
        ColourPipeline(camera).render(frame, settings, picture);
        auto const dialog = std::make_unique<CSbl>();
        dialog->measure(picture.constBits(), size.width(), size.height(), picture.bytesPerLine() / 4);
        BlockReport const measured = measureBlocks(frame, camera, settings);
        // An exponent of 0.45 is not quite the curve that the dialog undoes, and smaller blocks reach farther
        // into the corners: that makes 2 % here.
        EXPECT_NEAR(measured.largestColourDeviation / dialog->maxDeviation(), 1, 0.04);
    }
}

// A sensor whose green saturates first and whose corners get a third of the light.
Frame exposed(CameraDescription const& camera, uint32_t time, double lightPerTime) {
    return bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
        double const u = (x + 0.5) / camera.width * 2 - 1, v = (y + 0.5) / camera.height * 2 - 1;
        double const colour = site == Site::Green ? 1 : site == Site::Red ? 0.6 : 0.4;
        double const light = time * lightPerTime * colour * (1 - 0.33 * (u * u + v * v));
        return std::min(camera.blackLevel + 1000 * light, camera.whiteLevel);
    });
}

TEST(ExposureLoop, SettlesWithinTwelveFramesFromAnyStartWithoutClippingAgain) {
    CameraDescription const camera = bayerCamera(64, 48);
    struct {
        int zone;
        double target, lowest, highest;
    } const rows[] = {{40, 0.5, 0.48, 0.52}, {40, 2.0, 0.8, 0.97}, {100, 2.0, 0.7, 0.97}};
    for (auto const& [zone, target, lowest, highest] : rows)
        for (double const lightPerTime : {1.4e-5, 2e-4, 1e-3, 4e-3})
            for (uint32_t const start : {1U, 100U, 1000U, 20000U}) {
                SCOPED_TRACE(testing::Message() << start << " at " << lightPerTime << " to " << target);
                auto const centreAt = [&](uint32_t time) {
                    return measureCentre(exposed(camera, time, lightPerTime), camera, zone);
                };
                uint32_t time = start;
                bool clippedAgain = false, wasUnclipped = false;
                for (int frame = 0; frame < 12; ++frame) {
                    CentreZone const centre = centreAt(time);
                    clippedAgain = clippedAgain || (wasUnclipped && centre.peak >= 0.99);
                    wasUnclipped = wasUnclipped || centre.peak < 0.99;
                    time = nextExposure(time, centre, target);
                }
                CentreZone const centre = centreAt(time);
                EXPECT_TRUE(lowest < centre.mean && centre.mean < highest) << centre.mean;
                EXPECT_LT(centre.peak, 0.97);
                EXPECT_FALSE(clippedAgain);
                // Where the peak limits it, it follows the peak's last digit.
                double const slack = zone == 100 ? 0.002 * time : 0;
                EXPECT_NEAR(nextExposure(time, centre, target), time, slack) << "still moving";
            }
}
} // namespace
} // namespace pictara
