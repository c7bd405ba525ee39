#include "tests/support/solver_input.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>

namespace {
sf_Handle* create(char const* block) { return sf_Create2(block, 50, 1, 0xFFFFFFFF); }

TEST(Layout, FaultsAreNamedWithTheirPlace) {
    QByteArray const good = TestSensor{.bankSlots = {0, 2, 3, 4}, .tablesHaveOrigins = true}.layout();
    ASSERT_TRUE(Handle(create(good.constData())));
    constexpr char const* kRows[][3] = {
        {"sensor-layout-1", "sensor-layout-2", "first line"},
        {"\"height\": 360", "\"height\": 47", "height: 47 lies outside"},
        {"\"whiteLevel\": 4095", "\"whiteLevel\": 168", "whiteLevel: it is not above"},
        {"\"input\": \"bayer\"", "\"input\": \"ycbcr\"", "sampleBytes: only Bayer"},
        {"\"greenBlue\"", "\"green\"", "correction.banks[0].planes: the key \"greenBlue\" is missing"},
        {"\"stride\": 2", "\"stride\": 400000000", "stride: 400000000 lies outside"},
        {"}", "", "sensor data: line "},
        {"\"slot\": 4", "\"slot\": 3", "correction.banks[3].slot: 3 occurs twice"},
        {"\"address\": 16132", "\"address\": 4294967295", "correction.banks[1].originRow.address"},
    };
    for (auto const& [from, to, named] : kRows) {
        SCOPED_TRACE(named);
        WarningLog const log;
        QByteArray const bad = QByteArray(good).replace(from, to);
        ASSERT_NE(bad, good);
        EXPECT_EQ(create(bad.constData()), nullptr);
        EXPECT_TRUE(log.has(named)) << log.all().constData();
    }
}

TEST(Layout, IsForeignMissingOrFoundBesideTheLibraryByKindAndVariant) {
    WarningLog const log;
    std::unique_ptr<char[]> const foreign(new char[4]{'s', 'e', 'n', '\0'}); // not read beyond
    EXPECT_FALSE(create(foreign.get()) || create(nullptr));
    EXPECT_TRUE(log.has("there is no sensor data"));
    EXPECT_TRUE(Handle(sf_Create(68, 1, -1)));
    EXPECT_EQ(sf_Create(50123, 8, -1), nullptr);
    EXPECT_TRUE(log.has("50123-8.layout"));
}

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
    for (Row const& row : {Row{.cause = "too dark", .level = 0.03},
                           {.cause = "clipped", .level = 1.05, .hasBlocks = true},
                           {.cause = "not flat", .discRadius = 30, .discDepth = 0.9, .hasBlocks = true},
                           {.cause = "not flat", .discRadius = 120, .discDepth = 0.4, .hasBlocks = true},
                           {.cause = "lamp is not even", .acrossX = -0.5},
                           {.cause = "lamp is not even", .acrossY = 0.6}}) {
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

TEST_F(Refusal, EmptyFramesForeignRecordsAndNullHandles) {
    char const byte = 0;
    EXPECT_EQ(sf_SetInputImage2(handle.get(), nullptr, 640, 360, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_SetInputImage2(handle.get(), &byte, 0, 360, 12, 0, 0, 0, -1, -1), 0);
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, lens)));
    sf_SolutionParams const solution{};
    EXPECT_EQ(sf_FindSolution(handle.get(), &solution), -1);
    EXPECT_EQ(sf_FindApga(handle.get(), nullptr), -1);

    Handle const coded = open({.input = "ycbcr", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255});
    sf_YcbcrInput const noRange{sizeof noRange, 0, {0, 1, 2, 3}, 16, 16, 224, 128, 0};
    EXPECT_EQ(sf_SetInputImageYcbcr(coded.get(), &byte, 640, 360, &noRange, -1, -1), 0);

    EXPECT_EQ(sf_SetInputImage2(nullptr, &byte, 1, 1, 12, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(sf_DumpRegList(nullptr), nullptr);
    sf_Destroy(nullptr);
}
} // namespace
