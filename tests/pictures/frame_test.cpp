#include "pictures/frame.h"

#include "pictures/white_balance.h"

#include <gtest/gtest.h>
#include <limits>
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

TEST(WhiteBalance, GainLeavesAQuarterOfTheErrorAndTruncates) {
    EXPECT_EQ(correctedGain(1000, 120, 100), 875);
    EXPECT_EQ(correctedGain(1000, 80, 100), 1187);
    EXPECT_EQ(correctedGain(std::numeric_limits<int32_t>::max(), 1e-9, 255),
              std::numeric_limits<int32_t>::max());
}

TEST(WhiteBalance, TouchesNoPixelOfAFrameThatDoesNotHoldTogether) {
    uint8_t const pixel[4] = {1, 2, 3, 4};
    Frame const frames[] = {
        {nullptr, ImageType::Rgb32, 640, 480, 2560}, {pixel, ImageType::Rgb32, 0, 480, 2560},
        {pixel, ImageType::Rgb32, 640, -1, 2560},    {pixel, ImageType::Rgb32, 640, 480, 2559},
        {pixel, ImageType::Rgb32, 640, 480, -2559},  {pixel, ImageType::Rgb32, 1, 1, 4},
        {pixel, ImageType::Raw12, 640, 480, 2560},   {pixel, ImageType::Rgb32, 0x40000000, 480, 0},
    };
    for (Frame const& frame : frames)
        EXPECT_FALSE(meanOfCentre(frame)) << frame.width << " x " << frame.height;
}
} // namespace
