#include "pictures/block_statistics.h"
#include "simulator/host/report/charts.h"
#include "simulator/host/session/exposure_loop.h"
#include "simulator/pictures/block_report.h"
#include "simulator/pictures/colour_pipeline.h"
#include "simulator/pictures/frame_readings.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;

// A camera of 12-bit Bayer frames, black at 100 and full scale at 1100 counts.
CameraDescription bayerCamera(int width, int height, uint32_t phase = 0) {
    CameraDescription camera;
    camera.width = uint32_t(width);
    camera.height = uint32_t(height);
    camera.bayerPhase = phase;
    camera.blackLevel = 100;
    camera.whiteLevel = 1100;
    return camera;
}

constexpr uint32_t kSpare = 6; // bytes behind each row

enum class Site { Red, Green, Blue };

// A frame of the camera's samples in counts, its rows longer than they need be.
template <typename Counts>
Frame bayerFrame(CameraDescription const& camera, Counts counts) {
    Frame frame{FrameType::Raw12, camera.width, int32_t(camera.height), camera.width * 2 + kSpare, {}};
    frame.pixels.fill('\x55', int(frame.pitch * camera.height));
    for (uint32_t y = 0; y < camera.height; ++y)
        for (uint32_t x = 0; x < camera.width; ++x) {
            bool const redColumn = ((x ^ camera.bayerPhase) & 1) == 0;
            bool const redRow = ((y ^ camera.bayerPhase >> 1) & 1) == 0;
            Site const site = redColumn != redRow ? Site::Green : redRow ? Site::Red : Site::Blue;
            auto const sample = uint16_t(std::lround(counts(site, x, y)));
            std::memcpy(frame.pixels.data() + y * frame.pitch + 2 * x, &sample, 2);
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
    QImage flat(7, 5, QImage::Format_RGB32);
    flat.fill(qRgb(51, 128, 204));
    for (uint32_t phase = 0; phase < 4; ++phase) {
        CameraDescription const camera = bayerCamera(7, 5, phase);
        EXPECT_EQ(rendered(camera, bayerFrame(camera, flatScene)), flat) << phase;
    }
}

TEST(ColourPipeline, GainsMatrixAndSaturationActInThisOrder) {
    CameraDescription camera = bayerCamera(4, 4);
    camera.colourMatrix = {1.5, -0.5, 0, -0.25, 1.5, -0.25, 0, -0.5, 1.5};
    double const grey = 0.2126 * 0.35 + 0.7152 * 0.55 + 0.0722 * 0.35;
    ColourSettings settings{.redGain = 2, .blueGain = 0.5};
    auto const expectColour = [&](double red, double green, double blue) {
        EXPECT_TRUE(
            readLinear(bayerFrame(camera, flatScene), camera, settings, [&](uint32_t, auto const& row) {
                EXPECT_NEAR(row.red[0], red, 1e-5);
                EXPECT_NEAR(row.green[0], green, 1e-5);
                EXPECT_NEAR(row.blue[0], blue, 1e-5);
            }));
    };
    expectColour(0.4, 0.5, 0.4);
    settings.colourCorrection = true;
    expectColour(0.35, 0.55, 0.35);
    settings.saturation = 0;
    expectColour(grey, grey, grey);
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
    for (auto const& [black, white, pairs] : // 40 % luma, red difference of 0.142
         {std::tuple(0, 255, "668066a4668066a4"), {16, 235, "688068a0688068a0"}}) {
        CameraDescription camera = bayerCamera(4, 2);
        camera.rawType = FrameType::Ycbcr;
        camera.blackLevel = black;
        camera.whiteLevel = white;
        QRgb const pixel =
            rendered(camera, {FrameType::Ycbcr, 4, 2, 8, QByteArray::fromHex(pairs).repeated(2)}).pixel(3, 1);
        EXPECT_NEAR(qRed(pixel), 152.5, 2);
        EXPECT_NEAR(qGreen(pixel), 76.5, 2);
        EXPECT_NEAR(qBlue(pixel), 102, 2);
    }
}

TEST(ColourPipeline, AFrameShorterThanItSaysIsNotTouched) {
    CameraDescription const camera = bayerCamera(8, 8);
    Frame const whole = bayerFrame(camera, flatScene);
    for (auto const& [missing, pitch, height, isDrawn] : {std::tuple(kSpare, 22U, 8, true),
                                                          {kSpare + 1, 22, 8, false},
                                                          {0, 15, 8, false},
                                                          {0, 22, -8, false}}) {
        Frame frame{FrameType::Raw12, 8, height, pitch, whole.pixels};
        frame.pixels.chop(int(missing)); // of the last row
        EXPECT_EQ(!rendered(camera, frame).isNull(), isDrawn) << missing << ' ' << pitch << ' ' << height;
    }
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

// Above black: G 50, R 25 in the first row, B 12, and twice that from row 8 on.
TEST(FrameReadings, SamplesAreToldMarkedSavedAndAveragedAsTheSensorDeliversThem) {
    simulator::Frame frame{simulator::FrameType::Raw8, 16, 16, 16, QByteArray(256, '\0')};
    constexpr int kCell[] = {50, 25, 12, 50};
    for (int i = 0; i < 256; ++i)
        frame.pixels[i] = char(10 + (i < 128 ? 1 : 2) * kCell[i % 2 + i / 16 % 2 * 2]);
    simulator::CameraDescription camera;
    std::tie(camera.bayerPhase, camera.unusableRows, camera.blackLevel, camera.whiteLevel) =
        std::tuple(1, 1, 10, 110);
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(qRgb(1, 2, 3));
    auto const text = [&](int x, int y) { return pixelText({x, y}, frame, camera, picture); };
    EXPECT_EQ(text(1, 2), "x 1  y 2    raw R 35    shown 1 2 3");
    EXPECT_TRUE(text(0, 2).contains("Gr 60") && text(3, 9).contains("Gb 110") &&
                text(2, 15).contains("B 34"));
    EXPECT_TRUE(text(4, 0).contains("no picture"));
    QImage marked = picture.copy();
    EXPECT_EQ(markClipped(frame, camera, picture, marked), 100.0 * 64 / (16 * 15)) << "green from row 8 on";
    EXPECT_TRUE(marked.pixel(5, 7) == picture.pixel(5, 7) && marked.pixel(5, 8) != picture.pixel(5, 8));
    QImage const saved = QImage::fromData(pngOf(rawPicture(frame)));
    EXPECT_EQ(reinterpret_cast<quint16 const*>(saved.constScanLine(2))[1], 35) << saved.format();
    auto const profile = [&](QLine line) { // the matrix, of zeros, is left out
        return profileAlong(line, frame, camera, {.redGain = 2, .colourCorrection = true});
    };
    EXPECT_TRUE(profile({0, 12, 15, 12}).front()[1] == 1 && profile({0, 2, 15, 15}).back()[1] == 1);
    Colour const first = profile({0, 2, 15, 15}).front();
    EXPECT_TRUE(first[0] == 0.5 && first[1] == 0.5 && first[2] < 0.121);
    frame = {simulator::FrameType::Ycbcr, 8, 16, 16, frame.pixels.replace(32, 4, "0123", 4)};
    picture = picture.copy(0, 0, 8, 16);
    EXPECT_TRUE(text(1, 2).contains("raw Y 50 Cb 49 Cr 51"));
    picture.fill(qRgb(9, 255, 9));
    EXPECT_EQ(markClipped(frame, camera, picture, marked), 100) << "by what is shown";
}

// The host measures light, the dialog what a display makes of it, on other blocks.
TEST(BlockReport, FindsAboutTheColourDeviationThatTheDialogFinds) {
    ColourSettings const settings{.redGain = 1.1, .blueGain = 1.2, .displayExponent = 0.45};
    for (QSize const size : {QSize(320, 240), QSize(331, 217)}) {
        auto const camera = bayerCamera(size.width(), size.height());
        // Colour that changes over the picture, as an uncorrected lens leaves it.
        auto const frame = bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
            double const u = double(x) / size.width(), v = double(y) / size.height();
            double const gain = site == Site::Red ? 1 - 0.2 * u : site == Site::Blue ? 0.8 + 0.1 * u * v : 1;
            return 100 + 800 * gain * (1 - 0.3 * v);
        });
        QImage const picture = rendered(camera, frame, settings);
        auto const dialog = std::make_unique<CSbl>();
        dialog->measure(picture.constBits(), size.width(), size.height(), picture.bytesPerLine() / 4);
        // An exponent of 0.45 is not quite the curve that the dialog undoes, and smaller blocks reach farther
        // into the corners: that makes 2 % here.
        double const measured = measureBlocks(frame, camera, settings).largestColourDeviation;
        EXPECT_NEAR(measured / dialog->maxDeviation(), 1, 0.04);
    }
}

TEST(ExposureLoop, SettlesWithinTwelveFramesFromAnyStartWithoutClippingAgain) {
    CameraDescription const camera = bayerCamera(64, 48);
    for (auto const& [zone, target, lowest, highest] :
         {std::tuple(40, 0.5, 0.48, 0.52), {40, 2.0, 0.8, 0.97}, {100, 2.0, 0.7, 0.97}})
        for (double const lightPerTime : {1.4e-5, 2e-4, 1e-3, 4e-3})
            for (uint32_t const start : {1U, 100U, 1000U, 20000U}) {
                SCOPED_TRACE(testing::Message() << start << " at " << lightPerTime << " to " << target);
                uint32_t time = 0, next = start;
                CentreZone centre;
                bool wasUnclipped = false;
                for (int frame = 0; frame <= 12; ++frame) {
                    time = next;
                    // A sensor whose green saturates first and whose corners get a third of the light.
                    auto const counts = [=](Site site, uint32_t x, uint32_t y) {
                        double const u = (x + 0.5) / 32 - 1, v = (y + 0.5) / 24 - 1;
                        double const colour = site == Site::Green ? 1 : site == Site::Red ? 0.6 : 0.4;
                        double const light = time * lightPerTime * colour * (1 - 0.33 * (u * u + v * v));
                        return std::min(100 + 1000 * light, 1100.0);
                    };
                    centre = measureCentre(bayerFrame(camera, counts), camera, zone);
                    EXPECT_FALSE(wasUnclipped && centre.peak >= 0.99) << "clipped again";
                    wasUnclipped = wasUnclipped || centre.peak < 0.99;
                    next = nextExposure(time, centre, target);
                }
                EXPECT_TRUE(lowest < centre.mean && centre.mean < highest) << centre.mean;
                EXPECT_LT(centre.peak, 0.97);
                // Where the peak limits it, it follows the peak's last digit.
                EXPECT_NEAR(next, time, zone == 100 ? 0.002 * time : 0) << "still moving";
            }
}
} // namespace
} // namespace pictara
