#include "pictures/block_statistics.h"
#include "simulator/host/report/block_report.h"
#include "simulator/host/report/display_blocks.h"
#include "simulator/host/session/colour_pipeline.h"
#include "tests/pictara/test_frames.h"

#include <gtest/gtest.h>

namespace pictara {
namespace {
using simulator::CameraDescription;

TEST(BlockReport, FindsTheDarkBlockAndTheColouredOne) {
    CameraDescription const camera = bayerCamera(320, 180);
    auto const dark = bayerFrame(camera, [](Site, uint32_t x, uint32_t y) {
        return x < 10 && y < 10 ? 500.0 : 600.0; // 0.4 of full scale in the first block, 0.5 elsewhere
    });
    BlockReport report = measureBlocks(linearRows(dark, camera, {}));
    EXPECT_NEAR(report.largestAgainstMedian, 0.2, 0.01); // its border is shared with brighter neighbours
    EXPECT_NEAR(report.largestAgainstCentre, 0.2, 0.01);
    EXPECT_NEAR(report.meanAgainstMedian, 0.2 / (32 * 18), 1e-4);
    EXPECT_LT(report.largestColourDeviation, 1);

    auto const red = bayerFrame(camera, [](Site site, uint32_t x, uint32_t y) {
        bool const coloured = x >= 200 && x < 210 && y >= 100 && y < 110;
        return coloured && site == Site::Red ? 700.0 : 600.0;
    });
    report = measureBlocks(linearRows(red, camera, {}));
    EXPECT_EQ(report.worstBlock, QRect(200, 100, 10, 10));
    EXPECT_GT(report.largestColourDeviation, 5);
}

// Colour that changes over the picture, as an uncorrected lens leaves it.
simulator::Frame shadedFrame(CameraDescription const& camera) {
    return bayerFrame(camera, [&](Site site, uint32_t x, uint32_t y) {
        double const u = double(x) / camera.width, v = double(y) / camera.height;
        double const gain = site == Site::Red ? 1 - 0.2 * u : site == Site::Blue ? 0.8 + 0.1 * u * v : 1;
        return 100 + 800 * gain * (1 - 0.3 * v);
    });
}

// The host tells its own figure beside the dialog's: one that is told of other blocks, another white or
// another transfer function proves nothing.
TEST(DisplayBlocks, RateAPictureAsTheDialogDoes) {
    ColourSettings const settings{.redGain = 1.1, .blueGain = 1.2, .displayExponent = 0.45};
    for (QSize const size : {QSize(320, 240), QSize(331, 217), QSize(333, 187), QSize(24, 10)}) {
        auto const camera = bayerCamera(uint32_t(size.width()), uint32_t(size.height()));
        auto const frame = shadedFrame(camera);
        QImage picture;
        ColourPipeline(camera).render(frame, settings, picture);
        auto const dialog = std::make_unique<CSbl>();
        dialog->measure(picture.constBits(), size.width(), size.height(), picture.bytesPerLine() / 4);
        DisplayBlocks const measured = rateDisplay(shownRows(picture));
        SCOPED_TRACE(testing::Message() << size.width() << " x " << size.height());
        ASSERT_EQ(measured.columns, dialog->columns());
        ASSERT_EQ(measured.rows, dialog->rows());
        for (size_t i = 0; i < measured.deviations.size(); ++i)
            EXPECT_NEAR(measured.deviations[i],
                        dialog->deviation(int(i) / measured.columns, int(i) % measured.columns), 1e-3)
                << i;
        // Without rounding to 8 bits it is nearly the same, where a block has more than a pixel.
        if (size.width() < 100)
            continue;
        DisplayBlocks const unrounded = rateDisplay(shownRows(linearRows(frame, camera, settings), settings));
        EXPECT_NEAR(unrounded.largest, dialog->maxDeviation(), 0.2);
    }
}
} // namespace
} // namespace pictara
