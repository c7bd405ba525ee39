#include "simulator/host/block_report.h"
#include "tests/pictara/test_frames.h"

#include <gtest/gtest.h>

namespace pictara {
namespace {

using simulator::CameraDescription;

TEST(BlockReport, FindsTheDarkBlockAndItsError) {
    CameraDescription const camera = bayerCamera(320, 180);
    auto const frame = bayerFrame(camera, [](Site, uint32_t x, uint32_t y) {
        return x < 10 && y < 10 ? 500.0 : 600.0; // 0.4 of full scale in the first block, 0.5 elsewhere
    });
    BlockReport const report = measureBlocks(linearRows(frame, camera, {}));
    EXPECT_NEAR(report.largestAgainstMedian, 0.2, 0.01); // its border is shared with brighter neighbours
    EXPECT_NEAR(report.largestAgainstCentre, 0.2, 0.01);
    EXPECT_NEAR(report.meanAgainstMedian, 0.2 / (32 * 18), 1e-4);
    EXPECT_LT(report.largestColourDeviation, 1);
}

TEST(BlockReport, MarksTheColouredBlock) {
    CameraDescription const camera = bayerCamera(320, 180);
    auto const frame = bayerFrame(camera, [](Site site, uint32_t x, uint32_t y) {
        bool const coloured = x >= 200 && x < 210 && y >= 100 && y < 110;
        return coloured && site == Site::Red ? 700.0 : 600.0;
    });
    BlockReport const report = measureBlocks(linearRows(frame, camera, {}));
    EXPECT_EQ(report.worstBlock, QRect(200, 100, 10, 10));
    EXPECT_GT(report.largestColourDeviation, 5);
}

} // namespace
} // namespace pictara
