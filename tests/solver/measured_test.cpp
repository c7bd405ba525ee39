#include "tests/solver/correction.h"
#include "tests/solver/measured_module.h"

#include <gtest/gtest.h>

namespace {

TEST(MeasuredModules, AreFlattenedInEveryLight) {
    auto const shadings = measuredShadings();
    if (shadings.empty())
        GTEST_SKIP() << "no measured shading at hand";
    TestSensor const sensor;
    for (MeasuredShading const& shading : shadings) {
        SCOPED_TRACE(shading.name.toStdString() + ", " + std::to_string(shading.colourTemperature) + " K");
        Response const response = shading.response(sensor);
        Handle const handle = open(sensor);
        ASSERT_TRUE(setImage(handle, sensor, expose(sensor, response)));
        ASSERT_EQ(findSolution(handle), 0);
        FieldQuality const before = measure(sensor, response);
        FieldQuality const quality = measure(sensor, after(response, Correction(sensor, registers(handle))));
        printf("%s %d: dE %.2f -> %.2f lum %.4f -> %.4f mean %.4f\n", qPrintable(shading.name),
               shading.colourTemperature, before.colourDeviation, quality.colourDeviation,
               before.worstLuminance, quality.worstLuminance, quality.meanLuminanceError);
        EXPECT_LE(quality.colourDeviation, 0.7);
        EXPECT_LE(quality.worstLuminance, before.worstLuminance / 5);
        EXPECT_LE(quality.meanLuminanceError, 0.03);
    }
}

} // namespace
