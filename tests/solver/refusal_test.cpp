#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {
struct Refusal : testing::Test {
    TestSensor sensor;
    Response lens = SyntheticLens{}.response(sensor);
    WarningLog log;
    Handle handle = open(sensor);
};

TEST_F(Refusal, NamesWhatIsWrongWithThePicture) {
    struct Row {
        char const* cause;
        double level = 0.8;
        double discRadius = 0, discDepth = 0;
        double acrossX = 0, acrossY = 0; ///< the lamp's gradient
        bool hasBlocks = false;          ///< else it is the whole picture
    };
    Row const rows[] = {
        {.cause = "too dark", .level = 0.03},
        {.cause = "clipped", .level = 1.05, .hasBlocks = true},
        {.cause = "not flat", .discRadius = 30, .discDepth = 0.9, .hasBlocks = true},
        {.cause = "not flat", .discRadius = 120, .discDepth = 0.4, .hasBlocks = true},
        {.cause = "lamp is not even", .acrossX = 0.5},
        {.cause = "lamp is not even", .acrossX = -0.5},
        {.cause = "lamp is not even", .acrossY = 0.6},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.cause);
        WarningLog const ofRow;
        ASSERT_TRUE(setImage(handle, sensor, expose(sensor, lens)));
        ASSERT_EQ(findSolution(handle), 0);
        auto const lit = [&](Colour colour, double x, double y) {
            return lens(colour, x, y) *
                   (std::hypot(x - 400, y - 200) < row.discRadius ? 1 - row.discDepth : 1) *
                   (1 + row.acrossX * (x / 640 - 0.5) + row.acrossY * (y / 360 - 0.5));
        };
        EXPECT_FALSE(setImage(handle, sensor, expose(sensor, lit, {.level = row.level})));
        EXPECT_TRUE(ofRow.has(row.cause)) << ofRow.all().constData();
        EXPECT_EQ(ofRow.has("refused blocks of"), row.hasBlocks);
        EXPECT_EQ(sf_DumpRegList(handle.get()), nullptr) << "of the picture before";
        EXPECT_EQ(findSolution(handle), -1);
    }
}

TEST_F(Refusal, FramesOfAnotherSizeAreToldByTheSolution) {
    char const tooSmallToBeRead = 0;
    EXPECT_NE(sf_SetInputImage2(handle.get(), &tooSmallToBeRead, 640, 362, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(findSolution(handle), -2);
    EXPECT_TRUE(log.has("640 x 362 instead of 640 x 360"));
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, lens)));
    EXPECT_EQ(findSolution(handle), 0);
}

TEST_F(Refusal, EmptyFramesForeignRecordsAndNullHandles) {
    char const byte = 0;
    EXPECT_EQ(sf_SetInputImage2(handle.get(), nullptr, 640, 360, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_SetInputImage2(handle.get(), &byte, 0, 360, 12, 0, 0, 0, -1, -1), 0);
    sf_YcbcrInput const good{sizeof good, 0, {0, 1, 2, 3}, 16, 235, 224, 128, 0};
    EXPECT_EQ(sf_SetInputImageYcbcr(handle.get(), &byte, 640, 360, &good, -1, -1), 0);
    EXPECT_TRUE(log.has("sensor delivers none"));

    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, lens)));
    sf_SolutionParams solution{};
    EXPECT_EQ(sf_FindSolution(handle.get(), &solution), -1);
    EXPECT_EQ(sf_FindSolution(handle.get(), nullptr), -1);
    EXPECT_EQ(sf_FindApga(handle.get(), nullptr), -1);

    Handle const coded = open({.input = "ycbcr", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255});
    sf_YcbcrInput noRange = good, noOrder = good, foreign = good;
    noRange.lumaHigh = 16;
    noOrder.componentOrder[3] = 0;
    foreign.size = 40;
    for (sf_YcbcrInput const* input : {&noRange, &noOrder, &foreign})
        EXPECT_EQ(sf_SetInputImageYcbcr(coded.get(), &byte, 640, 360, input, -1, -1), 0);

    sf_ApgaParams const table = tableParams(2, 2900);
    EXPECT_EQ(sf_SetInputImage2(nullptr, &byte, 1, 1, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_SetInputImageYcbcr(nullptr, &byte, 1, 1, &good, -1, -1), 0);
    EXPECT_EQ(sf_FindApga(nullptr, &table), -1);
    EXPECT_EQ(sf_DumpRegList(nullptr), nullptr);
    EXPECT_NE(sf_DumpRegFile(nullptr, "x", 0, 0, 0), 0);
    sf_Destroy(nullptr);
}
} // namespace
