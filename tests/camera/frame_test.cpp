#include "tests/support/camera_under_test.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr Region kMiddle{45, 45, 55, 55};

TEST(Frame, EveryInstalledProfileOpensAndDeliversWhatItDescribes) {
    QStringList const names = SimulatedCamera::profileNames();
    ASSERT_TRUE(names.contains(QStringLiteral("poly-12bit")));
    for (QString const& name : names) {
        SCOPED_TRACE(qPrintable(name));
        Camera const camera = openProfile(name);
        ASSERT_TRUE(camera);
        CameraDescription const& description = camera->description();
        Frame const frame = camera->grab();
        EXPECT_EQ(frame.type, description.rawType);
        EXPECT_EQ(frame.width, description.width);
        EXPECT_EQ(uint32_t(frame.height), description.height);
        EXPECT_EQ(frame.pitch, frame.width * (frame.type == FrameType::Raw8 ? 1 : 2));
        EXPECT_EQ(uint32_t(frame.pixels.size()), frame.pitch * uint32_t(frame.height));
        vy_SensorDescription const* const info = vy_SensorInfo(camera->handle());
        ASSERT_TRUE(info);
        EXPECT_EQ(info->sensorKind, description.sensorKind);
        EXPECT_EQ(info->imageWidth, frame.width);
        EXPECT_EQ(QByteArray(static_cast<char const*>(info->sensorData)).left(16), "sensor-layout-1\n");
        if (frame.type == FrameType::Ycbcr)
            continue;
        // Room above for the exposure loop, and light enough to begin with.
        double const green =
            greenMean(*camera, frame, kMiddle) / (description.whiteLevel - description.blackLevel);
        EXPECT_NEAR(green, 0.2, 0.02);
    }
}

TEST(Frame, NoiseFollowsSeedAndFrameNumberAlone) {
    auto const frames = [](uint64_t seed) {
        Camera const camera = openChanged("{\"sensorName\": \"A\"}");
        camera->setSeed(seed);
        return std::array{camera->grab().pixels, camera->grab().pixels};
    };
    auto const first = frames(7);
    EXPECT_EQ(first, frames(7));
    EXPECT_NE(first[0], first[1]);
    EXPECT_NE(first[0], frames(8)[0]);
}

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
        for (uint32_t y = 500; y < 560; y += 2) {
            for (uint32_t x = 901; x < 1000; x += 2) {
                double const difference = sampleAt(one, x, y) - sampleAt(other, x, y);
                squares += difference * difference / 2;
                sum += sampleAt(one, x, y) - camera->description().blackLevel;
                ++count;
            }
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
    Light light;
    light.level = 0.5;
    camera->setLight(light);
    EXPECT_NEAR(greenMean(*camera, camera->grab(), kMiddle) / reference, 1, 0.01);
    writeRegister(*camera, "COARSE_INTEGRATION_TIME", 40000);
    Frame const bright = camera->grab();
    EXPECT_EQ(sampleAt(bright, 161, 120), camera->description().whiteLevel);
}

TEST(Frame, LampColourRampAndObjectReachThePicture) {
    Camera const camera = openQuiet(0, 1); // mirrored: the ramp is the picture's, not the array's
    Frame const plain = camera->grab();
    double const daylight = redMean(*camera, plain, kMiddle) / greenMean(*camera, plain, kMiddle);
    Light light;
    light.colourTemperature = 2500;
    light.gradient = 0.2;
    light.objectInPicture = true;
    camera->setLight(light);
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
    ASSERT_TRUE(camera);
    Light dark;
    dark.level = 0;
    camera->setLight(dark);
    Frame const frame = camera->grab();
    double brightest[3] = {0, 0, 0};
    for (uint32_t y = 0; y < 3; ++y)
        for (uint32_t x = 0; x < frame.width; ++x)
            brightest[y] = std::max(brightest[y], sampleAt(frame, x, y));
    EXPECT_GT(brightest[0], 1000);
    EXPECT_GT(brightest[1], 1000);
    EXPECT_LT(brightest[2], 200);
}

// ITU-R BT.601, full range: luma 0.299 R + 0.587 G + 0.114 B, chroma around 128.
TEST(Frame, YcbcrCarriesTheColoursOfTheRawPicture) {
    QByteArray const quiet =
        "{\"base\": \"%1\", \"readOut\": {\"electronsPerCount\": 90, \"readNoise\": 0}%2}";
    TestFiles const files;
    QByteArray const rawLayout = ", \"array\": {\"height\": 720}, \"layout\": {\"height\": 720}";
    Camera const raw = openProfile(files.write(
        QStringLiteral("raw.json"), QByteArray(quiet).replace("%1", "soc-pga").replace("%2", rawLayout)));
    Camera const coded = openProfile(files.write(QStringLiteral("coded.json"),
                                                 QByteArray(quiet).replace("%1", "ycbcr").replace("%2", "")));
    ASSERT_TRUE(raw && coded);
    for (Camera const* camera : {&raw, &coded})
        writeRegister(**camera, "COARSE_INTEGRATION_TIME", 1400);
    Frame const mosaic = raw->grab();
    Frame const frame = coded->grab();
    double const red = siteMean(*raw, mosaic, kMiddle, 0, 0) / 245;
    double const green =
        (siteMean(*raw, mosaic, kMiddle, 1, 0) + siteMean(*raw, mosaic, kMiddle, 0, 1)) / 2 / 245;
    double const blue = siteMean(*raw, mosaic, kMiddle, 1, 1) / 245;
    double const luma = 0.299 * red + 0.587 * green + 0.114 * blue;
    auto const* const pixel =
        reinterpret_cast<unsigned char const*>(frame.pixels.constData()) + 360 * frame.pitch + 640 * 2;
    EXPECT_NEAR(pixel[0], 255 * luma, 3);
    EXPECT_NEAR(pixel[1], 128 + 255 * (blue - luma) / 1.772, 3);
    EXPECT_NEAR(pixel[3], 128 + 255 * (red - luma) / 1.402, 3);
    EXPECT_EQ(pixel[2], pixel[0]);
}

} // namespace
