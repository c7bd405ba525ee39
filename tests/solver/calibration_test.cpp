#include "tests/solver/correction.h"
#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {
using Shape = SyntheticLens::Shape;

/// A lens without any symmetry, so that no exchange of sides or planes goes unseen.
constexpr SyntheticLens kLopsidedLens{Shape::CosineFourth, 2.5, 0.3, 0.1, -0.06};

std::vector<sf_RegEntry> calibrate(TestSensor const& sensor, Response const& response,
                                   Exposure const& exposure = {}, uint32_t falloffPercent = 100,
                                   uint32_t radius = 0) {
    Handle const handle = open(sensor);
    if (!setImage(handle, sensor, expose(sensor, response, exposure), exposure.bayerPhase,
                  exposure.orientation) ||
        findSolution(handle, falloffPercent, radius) != 0)
        return {};
    return registers(handle);
}

FieldQuality correctedQuality(TestSensor const& sensor, Response const& response,
                              std::vector<sf_RegEntry> const& list) {
    return measure(sensor, after(response, Correction(sensor, list)));
}

void expectFlat(TestSensor const& sensor, Response const& response, std::vector<sf_RegEntry> const& list,
                double colourDeviation, double luminance, double greenImbalance = 1) {
    ASSERT_EQ(list.size(), 102u);
    FieldQuality const quality = correctedQuality(sensor, response, list);
    EXPECT_LE(quality.colourDeviation, colourDeviation);
    EXPECT_LE(quality.worstLuminance, luminance);
    EXPECT_LE(quality.greenImbalance, greenImbalance);
}

TEST(Calibration, FlattensEveryLensOfTheRange) {
    struct Row {
        SyntheticLens lens;
        double luminance; ///< what a polynomial of this order can reach
    };
    Row const rows[] = {
        {{Shape::CosineFourth, 1.1, 0.4, 0.1, 0.1}, 0.01},
        {{Shape::CosineFourth, 2.5, 0.4, -0.1, 0.1}, 0.01},
        {{Shape::CosineFourth, 4.8, 0.4, 0.1, -0.1}, 0.01},
        {{Shape::RadialPolynomial, 1.1, 0.4, 0.1, 0}, 0.01},
        {{Shape::RadialPolynomial, 2.5, 0.4, 0.1, 0.1}, 0.025},
        {{Shape::RadialPolynomial, 4.8, 0.4, 0.1, -0.1}, 0.08},
    };
    TestSensor const sensor;
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "gain " << row.lens.peakGain << ", spread " << row.lens.spread
                                        << ", offset " << row.lens.offsetX);
        Response const response = row.lens.response(sensor);
        expectFlat(sensor, response, calibrate(sensor, response), 1.0, row.luminance);
    }
}

TEST(Calibration, PutsEveryPhaseAndOrientationInItsPlace) {
    for (int const sampleBytes : {1, 2}) {
        TestSensor const sensor{.width = 480,
                                .height = 270,
                                .sampleBytes = sampleBytes,
                                .blackLevel = sampleBytes == 1 ? 10 : 168,
                                .whiteLevel = sampleBytes == 1 ? 255 : 4095};
        Response const response = kLopsidedLens.response(sensor);
        for (unsigned i = 0; i < 16; ++i) {
            SCOPED_TRACE(testing::Message() << "phase " << i % 4 << ", orientation " << i / 4);
            auto const list = calibrate(sensor, response, {.bayerPhase = i % 4, .orientation = i / 4});
            expectFlat(sensor, response, list, 1.0, 0.015, 0.01);
        }
    }
}

TEST(Calibration, SolvesTheSmallestAndOddSensors) {
    for (auto const& [width, height] : {std::pair{48, 48}, std::pair{203, 111}})
        for (unsigned orientation = 0; orientation < 4; ++orientation) {
            SCOPED_TRACE(testing::Message() << width << ", orientation " << orientation);
            TestSensor const sensor{.width = width, .height = height};
            Response const response = kLopsidedLens.response(sensor);
            auto const list = calibrate(sensor, response, {.noise = 0.001, .orientation = orientation});
            expectFlat(sensor, response, list, 2, 0.03);
        }
}

TEST(Calibration, ReadsDisplayAndLumaChromaPicturesOfEveryOrientation) {
    for (char const* const input : {"rgb32", "ycbcr"}) {
        TestSensor const sensor{.input = input, .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255};
        Response const response = kLopsidedLens.response(sensor);
        for (uint32_t orientation = 0; orientation < 4; ++orientation) {
            SCOPED_TRACE(testing::Message() << input << ", orientation " << orientation);
            QByteArray const frame = expose(sensor, response, {.noise = 0.01, .orientation = orientation});
            Handle const handle = open(sensor);
            sf_YcbcrInput const coding{sizeof coding, 0, {0, 1, 2, 3}, 0, 255, 255, 128, orientation};
            bool const accepted =
                sensor.input == std::string("ycbcr")
                    ? sf_SetInputImageYcbcr(handle.get(), frame.constData(), 640, 360, &coding, -1, -1) != 0
                    : setImage(handle, sensor, frame, 0, orientation);
            ASSERT_TRUE(accepted);
            ASSERT_EQ(findSolution(handle), 0);
            expectFlat(sensor, response, registers(handle), 1.5, 0.02);
        }
    }
}

TEST(Calibration, MeetsTheAllowedFalloffAndKeepsHighlightsAndTheColourOfTheCentre) {
    constexpr std::pair<uint32_t, double> kRows[] = {
        {100, 1.0}, {75, 0.75}, {110, 1.1}, {0, 0.5}, {400, 1.25}};
    TestSensor const sensor;
    Response const response = kLopsidedLens.response(sensor);
    for (auto const& [percent, corners] : kRows) {
        SCOPED_TRACE(percent);
        Correction const correction(sensor, calibrate(sensor, response, {}, percent));
        Response const field = after(response, correction);
        double const centre = field(kColourGreen, 320, 180);
        for (double const x : {0.5, 639.5})
            for (double const y : {0.5, 359.5})
                EXPECT_NEAR(field(kColourGreen, x, y) / centre, corners, 0.01);
        double smallest = 100;
        for (uint32_t plane = 0; plane < 4; ++plane)
            for (int i = 0; i < 64 * 36; ++i)
                smallest =
                    std::min(smallest, correction.gain(0, plane, 10 * (i % 64) + 5, 10 * (i / 64) + 5));
        EXPECT_NEAR(smallest, 1.014, 0.016);
        for (uint32_t plane = 1; plane < 4; ++plane)
            EXPECT_NEAR(correction.gain(0, plane, 320, 180) / correction.gain(0, 0u, 320, 180), 1, 0.015);
    }
}

TEST(Calibration, SpendsItsOrderWithinTheRadius) {
    TestSensor const sensor;
    Response const hard = SyntheticLens{Shape::RadialPolynomial, 4.8, 0.2, 0, 0}.response(sensor);
    auto const worstOnCircle = [&](double circle, uint32_t radius) {
        Response const field = after(hard, Correction(sensor, calibrate(sensor, hard, {}, 100, radius)));
        double worst = 0;
        for (int i = 0; i < 100; ++i) {
            double const x = 320 + circle * std::cos(i * 0.0628), y = 180 + circle * std::sin(i * 0.0628);
            worst = std::max(worst, std::abs(field(kColourGreen, x, y) / field(kColourGreen, 320, 180) - 1));
        }
        return worst;
    };
    EXPECT_LT(worstOnCircle(140, 150), 0.3 * worstOnCircle(140, 0));
    // A radius that holds few blocks or none must not break the solution.
    for (uint32_t const radius : {1u, 12u, 40u})
        EXPECT_LT(worstOnCircle(20, radius), 0.01) << radius;
}

TEST(Calibration, IsNotMisledByDeviantPixelsAndDust) {
    TestSensor const sensor;
    Response const clean = kLopsidedLens.response(sensor);
    Response const dusty = [&](Colour colour, double x, double y) {
        return clean(colour, x, y) * (std::hypot(x - 200, y - 100) < 12 ? 0.7 : 1.0);
    };
    auto const list = calibrate(sensor, dusty, {.deviantPixels = 0.008});
    expectFlat(sensor, clean, list, 1.0, 0.01);
}

TEST(Calibration, EveryRegisterMattersForTheFigure) {
    TestSensor const sensor;
    Response const response = kLopsidedLens.response(sensor);
    auto const list = calibrate(sensor, response);
    ASSERT_EQ(list.size(), 102u);
    double const good = correctedQuality(sensor, response, list).colourDeviation;

    auto permuted = list;
    for (size_t i = 2; i < list.size(); ++i)
        permuted[i].third = list[i + 1 < list.size() ? i + 1 : 2].third;
    EXPECT_GT(correctedQuality(sensor, response, permuted).colourDeviation, good + 1);

    for (size_t const plane : {size_t{1}, size_t{2}})
        for (size_t const coefficient : {0, 1, 2, 5, 10}) {
            auto spoilt = list;
            spoilt[2 + 25 * plane + coefficient].third = 0;
            EXPECT_GT(correctedQuality(sensor, response, spoilt).colourDeviation, good + 0.2)
                << "plane " << plane << ", coefficient " << coefficient;
        }
}
} // namespace
