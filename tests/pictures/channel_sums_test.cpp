#include "pictures/block_statistics.h"
#include "pictures/channel_sums.h"
#include "pictures/white_balance.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace kestra;

namespace {
// Noise, or full white, with odd padding behind each row and any alignment of the first pixel.
struct OddPicture {
    OddPicture(int w, int h, int padding, int misalignment, bool white = false)
        : width(w), height(h), pitch(ptrdiff_t{w} * 4 + padding),
          bytes(size_t(pitch * h + misalignment), 0xFF), m_misalignment(misalignment) {
        std::mt19937 random(uint32_t(w * 31 + h));
        if (!white)
            for (uint8_t& byte : bytes)
                byte = uint8_t(random());
    }
    [[nodiscard]] uint8_t const* top() const { return bytes.data() + m_misalignment; }
    [[nodiscard]] uint8_t const* bottom() const { return top() + (height - 1) * pitch; }

    int width;
    int height;
    ptrdiff_t pitch; // bytes
    std::vector<uint8_t> bytes;

private:
    int m_misalignment;
};

// The definition, pixel by pixel.
ChannelSums reference(uint8_t const* first, ptrdiff_t pitch, int top, int bottom, ColumnRange range,
                      ChannelSums sums = {}) {
    for (int y = top; y < bottom; ++y) {
        for (int x = range.first; x < range.last; ++x) {
            uint8_t const* const pixel = first + y * pitch + ptrdiff_t{x} * 4;
            sums.blue += pixel[0];
            sums.green += pixel[1];
            sums.red += pixel[2];
        }
    }
    return sums;
}

// Of sums, a block or a mean.
template <typename Figures>
auto channels(Figures const& of) {
    return std::tuple(double(of.red), double(of.green), double(of.blue));
}

void expectExactSums(OddPicture const& picture, std::vector<ColumnRange> const& ranges) {
    for (bool const upwards : {false, true}) {
        uint8_t const* const first = upwards ? picture.bottom() : picture.top();
        ptrdiff_t const pitch = upwards ? -picture.pitch : picture.pitch;
        ChannelSums const before = {5, 6, 7}; // what is there already is added to
        std::vector<ChannelSums> sums(ranges.size(), before);
        addChannelSums(first, pitch, picture.height, ranges, sums);
        for (size_t i = 0; i < ranges.size(); ++i)
            EXPECT_EQ(channels(sums[i]),
                      channels(reference(first, pitch, 0, picture.height, ranges[i], before)));
    }
}

TEST(ChannelSums, NoColumnIsLostAtOddSizesPitchesAndAlignments) {
    // Ranges of half a row and of more are summed in different ways.
    for (int const width : {1, 2, 7, 8, 33, 331, 2560, 5003}) {
        for (int const height : {1, 2, 3, 9, 23}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            OddPicture const picture(width, height, width % 3, height % 4);
            int const third = width / 3;
            expectExactSums(picture, {{0, width}});
            expectExactSums(picture, {{third, third + (width + 1) / 2}});
            expectExactSums(picture, {{0, third + 1}, {third, width}, {width - 1, width}});
        }
    }
}

TEST(ChannelSums, WhiteOverflowsNoSumAtAnyLength) {
    for (int const length : {256, 257, 258, 515, 3000}) {
        SCOPED_TRACE(length);
        expectExactSums({3, length, 0, 0, true}, {{0, 3}});
        expectExactSums({length, 3, 0, 0, true}, {{0, length}});
        expectExactSums({2600 + length, 2, 1, 3, true}, {{0, length}, {2600, 2600 + length}});
        expectExactSums({2 * length, 17, 0, 0, true}, {{0, length}});
    }
}

TEST(ChannelSums, EveryBlockAndTheCentreAreTheReferenceBitForBit) {
    using Row = std::tuple<int, int>;
    // Every grid, pictures smaller than their grid, blocks of more than 257 rows, and wide rows.
    for (auto const& [width, height] : {Row{331, 250}, Row{1281, 801}, Row{641, 359}, Row{7, 5}, Row{3, 997},
                                        Row{61, 4001}, Row{8197, 9}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        OddPicture const picture(width, height, 4 * (height % 5), width % 4);
        auto const expected = [&](int top, int bottom, ColumnRange range) {
            ChannelSums const sums = reference(picture.top(), picture.pitch, top, bottom, range);
            double const count = double(bottom - top) * double(range.last - range.first);
            return std::tuple(double(sums.red) / count, double(sums.green) / count,
                              double(sums.blue) / count);
        };
        CSbl statistics;
        statistics.measure(picture.top(), width, height, int32_t(picture.pitch / 4));
        for (int i = 0; i < statistics.rows() * statistics.columns(); ++i) {
            CSbl::Block const& block = statistics.block(i / statistics.columns(), i % statistics.columns());
            EXPECT_EQ(channels(block), expected(block.top, block.bottom, {block.left, block.right}));
        }
        auto const mean =
            meanOfCentre({picture.top(), ImageType::Rgb32, width, height, int32_t(picture.pitch)});
        ASSERT_TRUE(mean);
        EXPECT_EQ(channels(*mean), expected(height / 4, 3 * height / 4, {width / 4, 3 * width / 4}));
    }
}

TEST(WhiteBalance, GainLeavesAQuarterOfTheErrorAndTruncates) {
    EXPECT_EQ(correctedGain(1000, 120, 100), 875);
    EXPECT_EQ(correctedGain(1000, 80, 100), 1187);
    EXPECT_EQ(correctedGain(INT32_MAX, 1e-9, 255), INT32_MAX);
}

TEST(WhiteBalance, TouchesNoPixelOfAFrameThatDoesNotHoldTogetherOrHasNoCentre) {
    uint8_t const pixel[4] = {1, 2, 3, 4};
    Frame const frames[] = {
        {nullptr, ImageType::Rgb32, 640, 480, 2560}, {pixel, ImageType::Rgb32, 640, 480, -2559},
        {pixel, ImageType::Rgb32, 1, 480, 4},        {pixel, ImageType::Raw12, 640, 480, 2560},
        {pixel, ImageType::Rgb32, 640, -1, 2560},    {pixel, ImageType::Rgb32, 0x40000000, 480, 0},
    };
    for (Frame const& frame : frames)
        EXPECT_FALSE(meanOfCentre(frame)) << frame.width << " x " << frame.height;
}
} // namespace
