#include "pictures/block_statistics.h"
#include "pictures/lab.h"
#include "pictures/uniformity.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace kestra;

namespace {
struct Picture {
    Picture(int w, int h, uint32_t colour = 0x808080)
        : width(w), height(h), pixels(size_t(w) * size_t(h), colour) {}
    Frame frame() { return {pixels.data(), ImageType::Rgb32, width, height, width * 4}; }
    uint32_t& at(int x, int y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }

    int width;
    int height;
    std::vector<uint32_t> pixels;
};

TEST(BlockStatistics, GridFollowsTheAspectRatio) {
    using Row = std::tuple<int, int, int, int, int, int>;
    Row const rows[] = {{640, 480, 20, 15, 32, 32},   {1640, 1000, 32, 18, 51, 55},
                        {1639, 1000, 24, 16, 68, 62}, {1415, 1000, 24, 16, 58, 62},
                        {1414, 1000, 20, 15, 70, 66}, {7, 5, 20, 15, 1, 1}};
    for (auto const& [width, height, columns, down, blockWidth, blockHeight] : rows) {
        Picture picture(width, height);
        CSbl statistics;
        statistics.measure(picture.pixels.data(), width, height, width);
        EXPECT_EQ(statistics.columns(), columns) << width;
        EXPECT_EQ(statistics.rows(), down) << width;
        CSbl::Block const& last = statistics.block(down - 1, columns - 1);
        EXPECT_EQ(last.right - last.left, blockWidth);
        EXPECT_EQ(last.bottom - last.top, blockHeight);
        EXPECT_LE(last.right, width);
        EXPECT_LE(last.bottom, height);
    }
}

TEST(Lab, WhitePointIsTheRoundedOne) {
    Lab const white = rgbToLab(255, 255, 255);
    EXPECT_NEAR(white.l, 100, 1e-9);
    EXPECT_NEAR(white.a, 500 * (std::cbrt(95.05 / 95.0) - 1), 1e-9);
    EXPECT_NEAR(white.b, 200 * (1 - std::cbrt(108.9 / 108.9)), 1e-9);
    EXPECT_NEAR(rgbToLab(10, 10, 10).l, 116 * (7.787 * 10 / 255 / 12.92 + 16.0 / 116) - 16, 1e-3);
    EXPECT_NEAR(rgbToLab(255, 0, 0).a, 80.1, 0.2);
}

TEST(Uniformity, FindsTheTintedBlockBehindSkippedRows) {
    Picture picture(640, 482);
    for (int y = 2 + 64; y < 2 + 96; ++y)
        for (int x = 0; x < 32; ++x)
            picture.at(x, y) = 0x908080;
    for (int x = 0; x < 640; ++x)
        picture.at(x, 0) = picture.at(x, 1) = 0xFF00FF; // unusable rows would be the worst by far
    auto const result = measureUniformity(picture.frame(), 2);
    ASSERT_TRUE(result);
    // The rectangle counts from behind the skipped rows.
    EXPECT_EQ(result->worstBlock, QRect(QPoint(0, 64), QPoint(32, 96)));
    Lab const grey = rgbToLab(128, 128, 128);
    Lab const tint = rgbToLab(144, 128, 128);
    double const distance = std::hypot(tint.a - grey.a, tint.b - grey.b) * 299 / 300;
    EXPECT_NEAR(result->value, distance, 0.0051);
}

TEST(Uniformity, FramesThatDoNotHoldTogetherAreNotMeasuredButMissingPixelsAreGrey) {
    Picture picture(64, 48);
    Frame frame = picture.frame();
    EXPECT_FALSE(measureUniformity(frame, 48));
    frame.pitch = 64 * 4 - 1;
    EXPECT_FALSE(measureUniformity(frame, 0));
    frame = {picture.pixels.data() + 47 * 64, ImageType::Rgb32, 64, 48, -256}; // from its last row upwards
    EXPECT_TRUE(measureUniformity(frame, 0));
    frame.data = nullptr;
    auto const grey = measureUniformity(frame, 2);
    ASSERT_TRUE(grey);
    EXPECT_EQ(grey->value, 0);
    EXPECT_EQ(grey->worstBlock, QRect(QPoint(60, 42), QPoint(63, 45))) << "the last one";
    frame = {nullptr, ImageType::Rgb32, 1 << 14, (1 << 12) + 1, 1 << 16};
    EXPECT_FALSE(measureUniformity(frame, 0)) << "it would take longer than anyone waits";
}

TEST(Ring, LiesOnePixelFurtherOutAtTopAndLeftAndInsideTheFrame) {
    QRect const blocks[] = {{QPoint(5, 4), QPoint(11, 9)},
                            {QPoint(1, 1), QPoint(19, 15)}, // reaches the first and the last column and row
                            {QPoint(0, 0), QPoint(20, 16)}, // lies wholly outside
                            {QPoint(100, 100), QPoint(120, 120)}, // of an earlier, larger frame
                            {QPoint(2, 100), QPoint(4, 120)}};
    for (QRect const& block : blocks) {
        Picture picture(20, 16, 0);
        paintRing(picture.frame(), block, 0xDD2200);
        auto const isInside = [&](int x, int y, int margin) {
            return x >= block.left() - margin && x < block.right() + margin && y >= block.top() - margin &&
                   y < block.bottom() + margin;
        };
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 20; ++x)
                EXPECT_EQ(picture.at(x, y) == 0xDD2200, isInside(x, y, 2) && !isInside(x, y, 0))
                    << block.left() << ": " << x << ' ' << y;
    }
}

struct Asked : CSbl {
    explicit Asked(Picture& shown) : picture(shown) {}
    uint32_t pixelAt(int32_t x, int32_t y) override { return picture.at(x, y); }
    Picture& picture;
};

TEST(AskedPixels, GiveEveryBlockTheStatisticsOfThePictureItself) {
    Picture picture(660, 481);
    std::ranges::generate(picture.pixels,
                          [random = std::mt19937(3)]() mutable { return uint32_t(random()); });
    CSbl whole;
    whole.measure(picture.pixels.data(), picture.width, picture.height, picture.width);
    Asked asked(picture);
    asked.measure(nullptr, picture.width, picture.height, 0);
    ASSERT_EQ(asked.columns(), whole.columns());
    EXPECT_EQ(asked.chartScale(1, 2), 1024U) << "the chart table's";
    EXPECT_EQ(whole.pixelAt(3, 4), 0x808080U) << "where nobody is asked";
    for (int32_t i = 0; i < whole.rows() * whole.columns(); ++i) {
        CSbl::Block const& one = asked.block(i / whole.columns(), i % whole.columns());
        CSbl::Block const& other = whole.block(i / whole.columns(), i % whole.columns());
        EXPECT_EQ(std::tie(one.red, one.green, one.blue), std::tie(other.red, other.green, other.blue)) << i;
    }
}

TEST(FractionalPower, IsAsGoodAsTheStandardLibraryAtEveryNodeBorderAndBeyondTheTable) {
    constexpr int kSteps = 64 * 45; // between two powers of 2, of which the table has 64
    for (double const exponent : {2.4, 1.0 / 3}) {
        FractionalPower const power(exponent);
        double worst = 0;
        auto const look = [&](double x) {
            worst = std::max(worst, std::abs(power(x) / std::pow(x, exponent) - 1));
        };
        for (int i = 0; i < 10 * kSteps; ++i) {
            double const x = std::ldexp(1 + double(i % kSteps) / kSteps, i / kSteps - 8);
            look(x);
            look(std::nextafter(x, 0));
        }
        look(1e-300);
        look(1e100);
        EXPECT_LT(worst, 1e-15) << exponent;
    }
}
} // namespace
