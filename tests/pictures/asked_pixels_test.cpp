#include "pictures/block_statistics.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace kestra;

namespace {

constexpr int32_t kWidth = 660;
constexpr int32_t kHeight = 481;

struct Asked : CSbl {
    explicit Asked(std::vector<uint32_t> const& shown) : pixels(shown) {}
    uint32_t pixelAt(int32_t x, int32_t y) override { return pixels[size_t(y) * kWidth + size_t(x)]; }
    std::vector<uint32_t> const& pixels;
};

TEST(AskedPixels, GiveEveryBlockTheStatisticsOfThePictureItself) {
    std::vector<uint32_t> pixels(size_t(kWidth) * kHeight);
    std::mt19937 random(3);
    for (uint32_t& pixel : pixels)
        pixel = uint32_t(random());
    CSbl whole;
    whole.measure(pixels.data(), kWidth, kHeight, kWidth);
    Asked asked(pixels);
    asked.measure(nullptr, kWidth, kHeight, 0);
    ASSERT_EQ(asked.columns(), whole.columns());
    for (int32_t row = 0; row < whole.rows(); ++row)
        for (int32_t column = 0; column < whole.columns(); ++column) {
            CSbl::Block const& one = asked.block(row, column);
            CSbl::Block const& other = whole.block(row, column);
            EXPECT_EQ(one.red, other.red) << row << ' ' << column;
            EXPECT_EQ(one.green, other.green) << row << ' ' << column;
            EXPECT_EQ(one.blue, other.blue) << row << ' ' << column;
        }
}

} // namespace
