#include "tests/solver/correction.h"
#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
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

FieldQuality qualityWith(std::vector<sf_RegEntry> const& list, TestSensor const& sensor,
                         Response const& response) {
    return measure(sensor, after(response, Correction(sensor, list)));
}

void expectFlat(TestSensor const& sensor, Response const& response, FieldQuality const& worst,
                Exposure const& exposure = {}) {
    auto const list = calibrate(sensor, response, exposure);
    ASSERT_EQ(list.size(), 102u);
    expectWithin(qualityWith(list, sensor, response), worst);
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
        SCOPED_TRACE(row.luminance);
        expectFlat(sensor, row.lens.response(sensor), {0.02, row.luminance});
    }
}

TEST(Calibration, PutsEveryCodingPhaseAndOrientationInItsPlace) {
    TestSensor const sensors[] = {
        {.width = 400, .height = 300},
        {.width = 400, .height = 300, .sampleBytes = 1, .blackLevel = 10, .whiteLevel = 255},
        {.width = 400, .height = 300, .input = "rgb32", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255},
        {.width = 400, .height = 300, .input = "ycbcr", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255},
        {.width = 203, .height = 111},
        {.width = 48, .height = 48},
    };
    for (TestSensor const& sensor : sensors)
        for (unsigned i = 0; i < 16; ++i) {
            SCOPED_TRACE(testing::Message() << sensor.input << ' ' << sensor.width << ' ' << i);
            double const worst = sensor.width < 400 ? 0.03 : 0.01; // few samples hold much noise
            expectFlat(sensor, kLopsidedLens.response(sensor), {worst, worst},
                       {.noise = 0.002, .bayerPhase = i % 4, .orientation = i / 4});
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
        for (Colour const plane : {kColourRed, kColourGreen, kColourBlue, kColourGreenBlue}) {
            for (int i = 0; i < 64 * 36; ++i)
                smallest =
                    std::min(smallest, correction.gain(0, plane, 10 * (i % 64) + 5, 10 * (i / 64) + 5));
            EXPECT_NEAR(correction.gain(0, plane, 320, 180) / correction.gain(0, kColourGreen, 320, 180), 1,
                        0.015);
        }
        EXPECT_NEAR(smallest, 1.014, 0.016);
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
    expectWithin(qualityWith(calibrate(sensor, dusty, {.deviantPixels = 0.008}), sensor, clean),
                 {0.01, 0.01});
}

TEST(Calibration, EveryRegisterMattersForTheFigure) {
    TestSensor const sensor;
    Response const response = kLopsidedLens.response(sensor);
    auto const list = calibrate(sensor, response);
    double const good = qualityWith(list, sensor, response).colour;
    auto permuted = list;
    for (size_t i = 2; i + 1 < list.size(); ++i)
        permuted[i].third = list[i + 1].third;
    EXPECT_GT(qualityWith(permuted, sensor, response).colour, good + 0.05);
    for (size_t const plane : {1, 2})
        for (size_t const coefficient : {0, 1, 2, 5, 10}) {
            auto spoilt = list;
            spoilt[2 + 25 * plane + coefficient].third = 0;
            EXPECT_GT(qualityWith(spoilt, sensor, response).colour, good + 0.02)
                << "plane " << plane << ", coefficient " << coefficient;
        }
}
} // namespace
