#include "pictures/block_statistics.h"
#include "simulator/pictures/block_report.h"
#include "simulator/pictures/colour_pipeline.h"
#include "tests/pictara/test_frames.h"

#include <gtest/gtest.h>

namespace pictara {
namespace {
using simulator::CameraDescription;

TEST(BlockReport, FindsTheDarkBlockAndTheColouredOne) {
    CameraDescription camera = bayerCamera(320, 180);
    auto const dark = bayerFrame(camera, [](Site, uint32_t x, uint32_t y) {
        return x < 10 && y < 10 ? 500.0 : 600.0; // 0.4 of full scale in the first block, 0.5 elsewhere
    });
    BlockReport report = measureBlocks(dark, camera, {});
    EXPECT_NEAR(report.largestAgainstMedian, 0.2, 0.01); // its border is shared with brighter neighbours
    EXPECT_NEAR(report.largestAgainstCentre, 0.2, 0.01);
    EXPECT_NEAR(report.meanAgainstMedian, 0.2 / (32 * 18), 1e-4);
    EXPECT_LT(report.largestColourDeviation, 1);

    // Rows without a picture, of another colour: the block keeps its place, and the row that they tinge is
    // left out.
    for (uint32_t const margin : {0U, 19U}) {
        camera.unusableRows = margin;
        auto const red = bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
            bool const coloured = site == Site::Red && x >= 200 && x < 210 && y >= 100 && y < 110;
            return y < margin ? (site == Site::Red ? 1000.0 : 110.0) : coloured ? 700.0 : 600.0;
        });
        report = measureBlocks(red, camera, {});
        EXPECT_EQ(report.worstBlock, QRect(200, 100, 10, 10));
        EXPECT_GT(report.largestColourDeviation, 5);
        EXPECT_LT(report.deviations.front(), 0.5);
        EXPECT_LT(report.largestAgainstMedian, 0.1);
    }
}

// Colour that changes over the picture, as an uncorrected lens leaves it.
simulator::Frame shadedFrame(CameraDescription const& camera) {
    return bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
        double const u = double(x) / camera.width, v = double(y) / camera.height;
        double const gain = site == Site::Red ? 1 - 0.2 * u : site == Site::Blue ? 0.8 + 0.1 * u * v : 1;
        return 100 + 800 * gain * (1 - 0.3 * v);
    });
}

// The host measures light, the dialog what a display makes of it, on other blocks.
TEST(BlockReport, FindsAboutTheColourDeviationThatTheDialogFinds) {
    ColourSettings const settings{.redGain = 1.1, .blueGain = 1.2, .displayExponent = 0.45};
    for (QSize const size : {QSize(320, 240), QSize(331, 217)}) {
        auto const camera = bayerCamera(uint32_t(size.width()), uint32_t(size.height()));
        auto const frame = shadedFrame(camera);
        QImage picture;
        ColourPipeline(camera).render(frame, settings, picture);
        auto const dialog = std::make_unique<CSbl>();
        dialog->measure(picture.constBits(), size.width(), size.height(), picture.bytesPerLine() / 4);
        BlockReport const measured = measureBlocks(frame, camera, settings);
        // An exponent of 0.45 is not quite the curve that the dialog undoes, and smaller blocks reach farther
        // into the corners: that makes 2 % here.
        EXPECT_NEAR(measured.largestColourDeviation / dialog->maxDeviation(), 1, 0.04);
    }
}
} // namespace
} // namespace pictara
