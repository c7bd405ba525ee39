#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

class Refusal : public testing::Test {
protected:
    TestSensor m_sensor;
    Response m_lens = SyntheticLens{}.response(m_sensor);
    WarningLog m_log;
    Handle m_handle = open(m_sensor);
};

TEST_F(Refusal, NamesWhatIsWrongWithThePicture) {
    auto const disc = [&](double radius, double depth) {
        return [=, this](Colour colour, double x, double y) {
            return m_lens(colour, x, y) * (std::hypot(x - 400, y - 200) < radius ? 1 - depth : 1);
        };
    };
    auto const lamp = [&](double gradient, double acrossX, double acrossY) {
        return [=, this](Colour colour, double x, double y) {
            return m_lens(colour, x, y) *
                   (1 + gradient * (acrossX * (x / 640 - 0.5) + acrossY * (y / 360 - 0.5)));
        };
    };
    struct Row {
        char const* cause;
        Response response;
        double level = 0.8;
        bool hasBlocks = false; ///< else it is the whole picture
    };
    Row const rows[] = {
        {"too dark", m_lens, 0.03},
        {"clipped", m_lens, 1.05, true},
        {"not flat", disc(30, 0.9), 0.8, true},
        {"not flat", disc(120, 0.4), 0.8, true},
        {"lamp is not even", lamp(0.5, 1, 0)},
        {"lamp is not even", lamp(-0.5, 1, 0)},
        {"lamp is not even", lamp(0.6, 0, 1)},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.cause);
        WarningLog const log;
        Handle const handle = open(m_sensor);
        EXPECT_FALSE(setImage(handle, m_sensor, expose(m_sensor, row.response, {.level = row.level})));
        EXPECT_TRUE(log.has(row.cause)) << log.all().constData();
        EXPECT_EQ(log.has("refused blocks of"), row.hasBlocks) << log.all().constData();
        EXPECT_EQ(findSolution(handle), -1);
    }
}

TEST_F(Refusal, LeavesNoEarlierSolution) {
    ASSERT_TRUE(setImage(m_handle, m_sensor, expose(m_sensor, m_lens)));
    ASSERT_EQ(findSolution(m_handle), 0);
    EXPECT_FALSE(setImage(m_handle, m_sensor, expose(m_sensor, m_lens, {.level = 0.01})));
    EXPECT_EQ(sf_DumpRegList(m_handle.get()), nullptr);
}

TEST_F(Refusal, FramesOfAnotherSizeAreToldByTheSolution) {
    char const tooSmallToBeRead = 0;
    EXPECT_NE(sf_SetInputImage2(m_handle.get(), &tooSmallToBeRead, 640, 362, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(findSolution(m_handle), -2);
    EXPECT_TRUE(m_log.has("640 x 362 instead of 640 x 360"));
    ASSERT_TRUE(setImage(m_handle, m_sensor, expose(m_sensor, m_lens)));
    EXPECT_EQ(findSolution(m_handle), 0);
}

TEST_F(Refusal, EmptyFramesAndForeignRecords) {
    char const byte = 0;
    EXPECT_EQ(sf_SetInputImage2(m_handle.get(), nullptr, 640, 360, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_SetInputImage2(m_handle.get(), &byte, 0, 360, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_SetInputImage2(m_handle.get(), &byte, 640, 0, 12, 0, 0, 0, -1, -1), 0);
    sf_YcbcrInput const coding{sizeof coding, 0, {0, 1, 2, 3}, 0, 255, 255, 128, 0};
    EXPECT_EQ(sf_SetInputImageYcbcr(m_handle.get(), &byte, 640, 360, &coding, -1, -1), 0);
    EXPECT_TRUE(m_log.has("sensor delivers none"));

    ASSERT_TRUE(setImage(m_handle, m_sensor, expose(m_sensor, m_lens)));
    sf_SolutionParams solution{};
    EXPECT_EQ(sf_FindSolution(m_handle.get(), &solution), -1);
    EXPECT_EQ(sf_FindSolution(m_handle.get(), nullptr), -1);
    EXPECT_EQ(sf_FindApga(m_handle.get(), nullptr), -1);
}

TEST_F(Refusal, UnknownLumaChromaCodings) {
    TestSensor const sensor{.input = "ycbcr", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255};
    Handle const handle = open(sensor);
    char const byte = 0;
    sf_YcbcrInput const good{sizeof good, 0, {0, 1, 2, 3}, 16, 235, 224, 128, 0};
    sf_YcbcrInput noRange = good;
    noRange.lumaHigh = 16;
    sf_YcbcrInput noOrder = good;
    noOrder.componentOrder[3] = 0;
    sf_YcbcrInput foreign = good;
    foreign.size = 40;
    for (sf_YcbcrInput const* input : {&noRange, &noOrder, &foreign})
        EXPECT_EQ(sf_SetInputImageYcbcr(handle.get(), &byte, 640, 360, input, -1, -1), 0);
}

TEST_F(Refusal, NullHandlesAreHarmless) {
    char const byte = 0;
    sf_SolutionParams solution{};
    solution.size = sizeof solution;
    sf_ApgaParams const table = tableParams(2, 2900);
    sf_YcbcrInput const coding{};
    EXPECT_EQ(sf_SetInputImage2(nullptr, &byte, 1, 1, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_SetInputImageYcbcr(nullptr, &byte, 1, 1, &coding, -1, -1), 0);
    EXPECT_EQ(sf_FindSolution(nullptr, &solution), -1);
    EXPECT_EQ(sf_FindApga(nullptr, &table), -1);
    EXPECT_EQ(sf_FindAutoPga(nullptr, &table), -1);
    EXPECT_EQ(sf_DumpRegList(nullptr), nullptr);
    EXPECT_NE(sf_DumpRegFile(nullptr, "x", 0, 0, 0), 0);
    sf_Destroy(nullptr);
}

} // namespace
