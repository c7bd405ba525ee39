#include "hoststate/white_balance.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

TEST(WhiteBalance, GainLeavesAQuarterOfTheErrorAndTruncates) {
    EXPECT_EQ(correctedGain(1000, 120, 100), 875);
    EXPECT_EQ(correctedGain(1000, 80, 100), 1187);
    EXPECT_EQ(correctedGain(std::numeric_limits<int32_t>::max(), 1e-9, 255),
              std::numeric_limits<int32_t>::max());
}

TEST(WhiteBalance, AveragesExactlyTheCentre) {
    constexpr int kWidth = 10;
    constexpr int kHeight = 6;
    constexpr int kPitch = 48; // padded rows
    std::vector<uint8_t> pixels(size_t(kPitch) * kHeight, 0xFF);
    // Rows 1 to 3 and columns 2 to 6 are the centre of 10 x 6.
    for (int y = 1; y < 4; ++y)
        for (int x = 2; x < 7; ++x) {
            uint8_t* const pixel = pixels.data() + y * kPitch + x * 4;
            pixel[0] = 10;
            pixel[1] = 20;
            pixel[2] = uint8_t(30 + y);
            pixel[3] = 0;
        }
    Frame frame{pixels.data(), ImageType::Rgb32, kWidth, kHeight, kPitch};
    auto mean = meanOfCentre(frame);
    ASSERT_TRUE(mean);
    EXPECT_EQ(mean->blue, 10);
    EXPECT_EQ(mean->green, 20);
    EXPECT_EQ(mean->red, 32);

    // Told from its last row upwards, rows 2 to 4 of the memory are its centre: 32, 33 and the border's 255.
    frame.data = pixels.data() + (kHeight - 1) * kPitch;
    frame.pitch = -kPitch;
    mean = meanOfCentre(frame);
    ASSERT_TRUE(mean);
    EXPECT_DOUBLE_EQ(mean->red, (32 + 33 + 255) / 3.0);
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
