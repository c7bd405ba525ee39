#include "hoststate/block_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

struct ChannelSums {
    uint64_t red = 0;
    uint64_t green = 0;
    uint64_t blue = 0;

    void add(uint32_t pixel) {
        red += (pixel >> 16) & 0xFF;
        green += (pixel >> 8) & 0xFF;
        blue += pixel & 0xFF;
    }

    // `count` pixels of 4 bytes each in memory order: blue, green, red, unused.
    void addRun(uint8_t const* bytes, int32_t count) {
        for (int32_t i = 0; i < count; ++i, bytes += 4) {
            blue += bytes[0];
            green += bytes[1];
            red += bytes[2];
        }
    }
};

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
    for (int32_t row = 0; row < m_rows; ++row) {
        for (int32_t column = 0; column < m_columns; ++column) {
            Block& block = m_blocks[size_t(row)][size_t(column)];
            block.top = cellStart(height, row, m_rows, blockHeight);
            block.left = cellStart(width, column, m_columns, blockWidth);
            block.bottom = block.top + blockHeight;
            block.right = block.left + blockWidth;
        }
    }
}

void CSbl::averageBlocks(void const* pixels, int32_t pitchInPixels) {
    for (int32_t row = 0; row < m_rows; ++row) {
        std::array<ChannelSums, kMaxColumns> sums{};
        auto& blocks = m_blocks[size_t(row)];
        // Picture row by picture row across all blocks: the picture is walked once, in memory order.
        for (int64_t y = blocks[0].top; y < blocks[0].bottom; ++y) {
            for (int32_t column = 0; column < m_columns; ++column) {
                Block const& block = blocks[size_t(column)];
                ChannelSums& sum = sums[size_t(column)];
                if (pixels) {
                    auto const* const bytes = static_cast<uint8_t const*>(pixels);
                    sum.addRun(bytes + ptrdiff_t(y * pitchInPixels + block.left) * 4,
                               block.right - block.left);
                } else {
                    for (int32_t x = block.left; x < block.right; ++x)
                        sum.add(pixelAt(x, int32_t(y)));
                }
            }
        }
        for (int32_t column = 0; column < m_columns; ++column) {
            Block& block = blocks[size_t(column)];
            ChannelSums const& sum = sums[size_t(column)];
            double const count = double(block.right - block.left) * double(block.bottom - block.top);
            block.red = double(sum.red) / count;
            block.green = double(sum.green) / count;
            block.blue = double(sum.blue) / count;
            block.lab = rgbToLab(block.red, block.green, block.blue);
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
