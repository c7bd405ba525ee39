#include "pictures/block_statistics.h"

#include "pictures/channel_sums.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

using namespace kestra;

namespace {

// First pixel of cell `index` of `cells` along a side, such that `cell` pixels fit behind it.
int32_t cellStart(int32_t size, int32_t index, int32_t cells, int32_t cell) {
    return std::clamp(int32_t(int64_t{size} * index / cells), 0, size - cell);
}

} // namespace

CSbl::CSbl() = default;

uint32_t CSbl::chartScale(uint32_t, uint32_t) {
    return 1024;
}

uint32_t CSbl::pixelAt(int32_t, int32_t) {
    return 0x808080;
}

void CSbl::measure(void const* pixels, int32_t width, int32_t height, int32_t pitchInPixels) {
    clear();
    chooseGrid(width, height);
    placeBlocks(width, height);
    averageBlocks(pixels, pitchInPixels);
    rateBlocks();
}

void CSbl::clear() {
    m_blocks = {};
    m_deviations = {};
    m_meanA = 0;
    m_meanB = 0;
    m_maxDeviation = 0;
}

void CSbl::chooseGrid(int32_t width, int32_t height) {
    double const aspect = double(width) / height;
    if (aspect < 1.415) {
        m_columns = 20;
        m_rows = 15;
    } else if (aspect < 1.64) {
        m_columns = 24;
        m_rows = 16;
    } else {
        m_columns = kMaxColumns;
        m_rows = kMaxRows;
    }
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
    for (int32_t row = 0; row < m_rows; ++row) {
        std::array<ChannelSums, kMaxColumns> sums{};
        if (pixels)
            sumPixels(row, static_cast<uint8_t const*>(pixels), ptrdiff_t{pitchInPixels} * 4, sums);
        else
            sumAskedPixels(row, sums);
        for (int32_t column = 0; column < m_columns; ++column) {
            Block& block = m_blocks[size_t(row)][size_t(column)];
            ChannelSums const& sum = sums[size_t(column)];
            double const count = double(block.right - block.left) * double(block.bottom - block.top);
            block.red = double(sum.red) / count;
            block.green = double(sum.green) / count;
            block.blue = double(sum.blue) / count;
            block.lab = rgbToLab(block.red, block.green, block.blue);
        }
    }
}

void CSbl::sumPixels(int32_t row, uint8_t const* pixels, ptrdiff_t pitch, std::span<ChannelSums> sums) const {
    auto const& blocks = m_blocks[size_t(row)];
    std::array<ColumnRange, kMaxColumns> ranges{};
    for (size_t column = 0; column < size_t(m_columns); ++column)
        ranges[column] = {blocks[column].left, blocks[column].right};
    // All blocks of a row at once: a picture larger than the cache is read from memory only once, in order.
    addChannelSums(pixels + blocks[0].top * pitch, pitch, blocks[0].bottom - blocks[0].top,
                   std::span(ranges).first(size_t(m_columns)), sums);
}

void CSbl::sumAskedPixels(int32_t row, std::span<ChannelSums> sums) {
    auto const& blocks = m_blocks[size_t(row)];
    for (int32_t y = blocks[0].top; y < blocks[0].bottom; ++y) {
        for (size_t column = 0; column < size_t(m_columns); ++column) {
            ChannelSums& sum = sums[column];
            for (int32_t x = blocks[column].left; x < blocks[column].right; ++x) {
                uint32_t const pixel = pixelAt(x, y);
                sum.red += (pixel >> 16) & 0xFF;
                sum.green += (pixel >> 8) & 0xFF;
                sum.blue += pixel & 0xFF;
            }
        }
    }
}

void CSbl::rateBlocks() {
    double sumA = 0;
    double sumB = 0;
    for (int32_t row = 0; row < m_rows; ++row) {
        for (int32_t column = 0; column < m_columns; ++column) {
            sumA += block(row, column).lab.a;
            sumB += block(row, column).lab.b;
        }
    }
    m_meanA = sumA / (m_columns * m_rows);
    m_meanB = sumB / (m_columns * m_rows);
    for (int32_t row = 0; row < m_rows; ++row) {
        for (int32_t column = 0; column < m_columns; ++column) {
            Lab const& lab = block(row, column).lab;
            double const a = lab.a - m_meanA;
            double const b = lab.b - m_meanB;
            double const deviation = std::sqrt(a * a + b * b);
            m_deviations[size_t(row)][size_t(column)] = deviation;
            m_maxDeviation = std::max(m_maxDeviation, deviation);
        }
    }
}
