#include "tests/solver/correction.h"
#include "tests/solver/sensor.h"
#include "tests/solver/synthetic.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

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

TEST(Calibration, FlattensEveryLensOfTheRange) {
    using Shape = SyntheticLens::Shape;
    SyntheticLens const lenses[] = {
        {Shape::CosineFourth, 1.1, 0, 0, 0},
        {Shape::CosineFourth, 1.1, 0.4, 0.1, 0.1},
        {Shape::CosineFourth, 2.5, 0.2, 0, 0},
        {Shape::CosineFourth, 2.5, 0.4, -0.1, 0.1},
        {Shape::CosineFourth, 4.8, 0.4, 0.1, -0.1},
        {Shape::CosineFourth, 4.8, 0, 0, 0},
        {Shape::RadialPolynomial, 1.1, 0.4, 0.1, 0},
        {Shape::RadialPolynomial, 2.5, 0.2, 0, 0},
        {Shape::RadialPolynomial, 2.5, 0.4, 0.1, 0.1},
        {Shape::RadialPolynomial, 4.8, 0, 0, 0},
        {Shape::RadialPolynomial, 4.8, 0.4, 0.1, -0.1},
        {Shape::RadialPolynomial, 4.8, 0.4, -0.1, 0},
    };
    TestSensor const sensor;
    for (SyntheticLens const& lens : lenses) {
        SCOPED_TRACE("gain " + std::to_string(lens.peakGain) + ", spread " + std::to_string(lens.spread) +
                     ", offset " + std::to_string(lens.offsetX) +
                     (lens.shape == Shape::CosineFourth ? " cos" : " radial"));
        Response const response = lens.response(sensor);
        auto const list = calibrate(sensor, response);
        ASSERT_EQ(list.size(), 102u);
        FieldQuality const quality = measure(sensor, after(response, Correction(sensor, list)));
        printf("%.1f %.1f %.1f %d: dE %.2f lum %.4f mean %.4f\n", lens.peakGain, lens.spread, lens.offsetX,
               (int)lens.shape, quality.colourDeviation, quality.worstLuminance, quality.meanLuminanceError);
        EXPECT_LE(quality.colourDeviation, 1.0);
        if (lens.peakGain <= 2.5) {
            EXPECT_LE(quality.worstLuminance, 0.015);
        }
    }
}

} // namespace
