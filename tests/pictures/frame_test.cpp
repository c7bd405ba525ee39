#include "pictures/frame.h"

#include "pictures/uniformity.h"
#include "pictures/white_balance.h"

#include <gtest/gtest.h>
#include <vector>

using namespace kestra;

namespace {

constexpr auto kRgb32 = ImageType(11); // as the host numbers it

TEST(FrameRules, AFrameOfOneColumnOrOneRowHasNoCentre) {
    std::vector<uint32_t> const pixels(16);
    EXPECT_FALSE(meanOfCentre({pixels.data(), kRgb32, 1, 16, 4}));
    EXPECT_FALSE(meanOfCentre({pixels.data(), kRgb32, 16, 1, 64}));
    EXPECT_TRUE(meanOfCentre({pixels.data(), kRgb32, 2, 8, 8}));
}

TEST(FrameRules, ARingReachesTheFirstAndTheLastColumnAndRow) {
    std::vector<uint32_t> pixels(6 * 5);
    paintRing({pixels.data(), kRgb32, 6, 5, 24}, QRect(QPoint(1, 1), QPoint(5, 4)), 1);
    for (size_t i = 0; i < pixels.size(); ++i) {
        size_t const x = i % 6, y = i / 6;
        EXPECT_EQ(pixels[i], x == 0 || x == 5 || y == 0 || y == 4 ? 1U : 0U) << x << ' ' << y;
    }
}

} // namespace
