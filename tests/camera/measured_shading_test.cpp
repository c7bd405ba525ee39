#include "tests/camera/camera_under_test.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr Region kMiddle{40, 40, 60, 60};

QByteArray uniformGains(double gain) {
    QByteArray const text = QByteArray::number(gain);
    return '[' + text + ',' + text + ',' + text + ',' + text + ']';
}

QByteArray shadingFile(QByteArray const& illuminants,
                       QByteArray const& size = "\"columns\": 2, \"rows\": 2") {
    return "{\"format\": \"shading-gains-1\", \"name\": \"m\", " + size + ", \"illuminants\": [" +
           illuminants + "]}";
}

QByteArray illuminant(int kelvin, QByteArray const& red, QByteArray const& green) {
    return "{\"colour_temperature_K\": " + QByteArray::number(kelvin) + ", \"red\": " + red +
           ", \"green\": " + green + ", \"blue\": " + green + "}";
}

double redUnder(Camera const& camera, double kelvin) {
    Light light;
    light.colourTemperature = kelvin;
    camera->setLight(light);
    return redMean(*camera, camera->grab(), kMiddle);
}

TEST(MeasuredShading, GainsAreLinearInReciprocalKelvinAndHeldOutside) {
    TestFiles const files;
    QString error;
    Camera const flat = openQuiet();
    Camera const camera = openQuiet();
    QByteArray const one = uniformGains(1);
    ASSERT_TRUE(flat->useMeasuredShading(
        files.write(QStringLiteral("flat.json"), shadingFile(illuminant(5000, one, one))), &error));
    ASSERT_TRUE(camera->useMeasuredShading(
        files.write(QStringLiteral("two.json"),
                    shadingFile(illuminant(3000, one, one) + ',' + illuminant(6000, uniformGains(2), one))),
        &error))
        << qPrintable(error);
    struct Row {
        double kelvin;
        double gain;
    };
    // 4000 K lies half-way between 3000 K and 6000 K in 1/K.
    for (Row const& row : {Row{2000, 1}, Row{3000, 1}, Row{4000, 1.5}, Row{6000, 2}, Row{12000, 2}})
        EXPECT_NEAR(redUnder(flat, row.kelvin) / redUnder(camera, row.kelvin), row.gain, 0.01) << row.kelvin;
}

// A response that falls linearly from 1 to 1/4 between the outer cells' centres goes on to the border.
TEST(MeasuredShading, ReplacesTheWholeLensAndGoesOnLinearlyToTheBorder) {
    TestFiles const files;
    QString error;
    Camera const camera = openQuiet();
    QByteArray const gains = "[1, 1.3333333, 2, 4, 1, 1.3333333, 2, 4]"; // responses 1, 3/4, 1/2, 1/4
    ASSERT_TRUE(camera->useMeasuredShading(
        files.write(QStringLiteral("ramp.json"),
                    shadingFile(illuminant(5000, gains, gains), "\"columns\": 4, \"rows\": 2")),
        &error))
        << qPrintable(error);
    Frame const frame = camera->grab();
    double const middle = greenMean(*camera, frame, {49, 0, 51, 100});
    for (uint32_t percent = 0; percent < 100; percent += 7) {
        double const expected = 0.625 - (percent + 1 - 50.0) / 100;
        double const mean = greenMean(*camera, frame, {percent, 0, percent + 2, 100});
        EXPECT_NEAR(mean / middle, expected / 0.625, 0.01) << percent;
    }
    EXPECT_NEAR(greenMean(*camera, frame, {20, 0, 80, 4}) / greenMean(*camera, frame, {20, 48, 80, 52}), 1,
                0.01);
}

} // namespace
