#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr Region kMiddle{40, 40, 60, 60};

QByteArray uniformGains(double gain) {
    QByteArray const text = QByteArray::number(gain);
    return '[' + text + ',' + text + ',' + text + ',' + text + ']';
}

void useShading(Camera const& camera, int columns, QByteArray const& illuminants) {
    TestFiles const files;
    QString error;
    QByteArray const text =
        "{\"format\": \"shading-gains-1\", \"name\": \"m\", \"columns\": " + QByteArray::number(columns) +
        ", \"rows\": 2, \"illuminants\": [" + illuminants + "]}";
    ASSERT_TRUE(camera->useMeasuredShading(files.write(QStringLiteral("m.json"), text), &error))
        << qPrintable(error);
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
    Camera const flat = openQuiet(), camera = openQuiet();
    QByteArray const one = uniformGains(1);
    useShading(flat, 2, illuminant(5000, one, one));
    useShading(camera, 2, illuminant(3000, one, one) + ',' + illuminant(6000, uniformGains(2), one));
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
    Camera const camera = openQuiet();
    QByteArray const gains = "[1, 1.3333333, 2, 4, 1, 1.3333333, 2, 4]"; // responses 1, 3/4, 1/2, 1/4
    useShading(camera, 4, illuminant(5000, gains, gains));
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
