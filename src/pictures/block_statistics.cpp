#include "pictures/block_statistics.h"

#include "pictures/channel_sums.h"

#include <algorithm>
#include <cmath>
#include <span>

using namespace kestra;

static_assert(CSbl::kMaxColumns <= kMaxRanges);

namespace {
// First pixel of cell `index` of `cells` along a side, such that `cell` pixels fit behind it.
int32_t cellStart(int32_t size, int32_t index, int32_t cells, int32_t cell) {
    return std::clamp(int32_t(int64_t{size} * index / cells), 0, size - cell);
}

// All blocks of a row at once: a picture larger than the cache is read from memory only once, in order.
void addPixels(std::span<CSbl::Block const> blocks, uint8_t const* pixels, ptrdiff_t pitch,
               std::span<ChannelSums> sums) {
    std::array<ColumnRange, CSbl::kMaxColumns> ranges{};
    std::ranges::transform(blocks, ranges.begin(), [](CSbl::Block const& block) {
        return ColumnRange{block.left, block.right};
    });
    CSbl::Block const& any = blocks.front(); // they have one top and one bottom
    addChannelSums(pixels + any.top * pitch, pitch, any.bottom - any.top,
                   std::span(ranges).first(blocks.size()), sums);
}
} // namespace

uint32_t CSbl::chartScale(uint32_t, uint32_t) { return 1024; }
uint32_t CSbl::pixelAt(int32_t, int32_t) { return 0x808080; }

void CSbl::measure(void const* pixels, int32_t width, int32_t height, int32_t pitchInPixels) {
    m_blocks = {};
    m_deviations = {};
    m_maxDeviation = 0;
    double const aspect = double(width) / height;
    m_columns = aspect < 1.415 ? 20 : aspect < 1.64 ? 24 : kMaxColumns;
    m_rows = aspect < 1.415 ? 15 : aspect < 1.64 ? 16 : kMaxRows;
    placeBlocks(width, height);
    averageBlocks(pixels, pitchInPixels);
    rateBlocks();
}

void CSbl::placeBlocks(int32_t width, int32_t height) {
    int32_t const blockWidth = std::max(width / m_columns, 1);
    int32_t const blockHeight = std::max(height / m_rows, 1);
    std::array<int32_t, kMaxColumns> lefts{};
    for (int32_t column = 0; column < m_columns; ++column)
        lefts[size_t(column)] = cellStart(width, column, m_columns, blockWidth);
    for (int32_t row = 0; row < m_rows; ++row) {
        int32_t const top = cellStart(height, row, m_rows, blockHeight);
        for (int32_t column = 0; column < m_columns; ++column) {
            Block& block = m_blocks[size_t(row)][size_t(column)];
            block.top = top;
            block.left = lefts[size_t(column)];
            block.bottom = top + blockHeight;
            block.right = block.left + blockWidth;
        }
    }
}

void CSbl::averageBlocks(void const* pixels, int32_t pitchInPixels) {
    double sumA = 0;
    double sumB = 0;
    for (int32_t row = 0; row < m_rows; ++row) {
        auto const blocks = std::span(m_blocks[size_t(row)]).first(size_t(m_columns));
        std::array<ChannelSums, kMaxColumns> sums{};
        if (pixels)
            addPixels(blocks, static_cast<uint8_t const*>(pixels), ptrdiff_t{pitchInPixels} * 4, sums);
        else
            std::ranges::transform(blocks, sums.begin(),
                                   [&](Block const& block) { return askedSums(block); });
        for (size_t column = 0; column < blocks.size(); ++column) {
            Block& block = blocks[column];
            double const count = double(block.right - block.left) * double(block.bottom - block.top);
            block.red = double(sums[column].red) / count;
            block.green = double(sums[column].green) / count;
            block.blue = double(sums[column].blue) / count;
            block.lab = rgbToLab(block.red, block.green, block.blue);
            sumA += block.lab.a;
            sumB += block.lab.b;
        }
    }
    m_meanA = sumA / (m_columns * m_rows);
    m_meanB = sumB / (m_columns * m_rows);
}

ChannelSums CSbl::askedSums(Block const& block) {
    ChannelSums sums;
    for (int32_t y = block.top; y < block.bottom; ++y) {
        for (int32_t x = block.left; x < block.right; ++x) {
            uint32_t const pixel = pixelAt(x, y);
            sums.red += (pixel >> 16) & 0xFF;
            sums.green += (pixel >> 8) & 0xFF;
            sums.blue += pixel & 0xFF;
        }
    }
    return sums;
}

void CSbl::rateBlocks() {
    for (int32_t row = 0; row < m_rows; ++row) {
        for (int32_t column = 0; column < m_columns; ++column) {
            double const a = block(row, column).lab.a - m_meanA;
            double const b = block(row, column).lab.b - m_meanB;
            double const deviation = std::sqrt(a * a + b * b);
            m_deviations[size_t(row)][size_t(column)] = deviation;
            m_maxDeviation = std::max(m_maxDeviation, deviation);
        }
    }
}
