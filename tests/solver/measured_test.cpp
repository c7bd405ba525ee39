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
        SCOPED_TRACE(testing::Message()
                     << shading.name.toStdString() << ", " << shading.colourTemperature << " K");
        Response const response = shading.response(sensor);
        Handle const handle = open(sensor);
        ASSERT_TRUE(setImage(handle, sensor, expose(sensor, response)));
        ASSERT_EQ(findSolution(handle), 0);
        FieldQuality const before = measure(sensor, response);
        FieldQuality const quality = measure(sensor, after(response, Correction(sensor, registers(handle))));
        EXPECT_LE(quality.colourDeviation, 0.7);
        EXPECT_LE(quality.worstLuminance, before.worstLuminance / 5);
        EXPECT_LE(quality.meanLuminanceError, 0.03);
    }
}

} // namespace
