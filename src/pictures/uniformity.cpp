#include "pictures/uniformity.h"

#include "pictures/block_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace kestra {

namespace {

// Without pixel data each pixel is asked for: larger than any sensor's, a picture would hold up the host.
constexpr int64_t kMostAskedPixels = 1 << 26;

// Columns first <= x < last of a row, or rows of a column, as far as they lie in the frame.
struct Span {
    int64_t first;
    int64_t last;
};

Span clipped(int64_t first, int64_t last, int64_t size) {
    return {std::max<int64_t>(first, 0), std::min(last, size)};
}

void putPixel(Frame const& frame, int64_t x, int64_t y, uint32_t pixel) {
    // The host shows the frame after the call, so the marker is painted into the host's own memory.
    auto* const row = const_cast<uint8_t*>(frame.row(y));
    std::memcpy(row + x * 4, &pixel, sizeof pixel);
}

void paintRow(Frame const& frame, int64_t y, Span columns, uint32_t pixel) {
    for (int64_t x = columns.first; x < columns.last; ++x)
        putPixel(frame, x, y, pixel);
}

void paintColumn(Frame const& frame, int64_t x, Span rows, uint32_t pixel) {
    for (int64_t y = rows.first; y < rows.last; ++y)
        putPixel(frame, x, y, pixel);
}

} // namespace

std::optional<Uniformity> measureUniformity(Frame const& frame, int skippedRows) {
    if (!frame.isConsistent(4) || frame.height <= skippedRows)
        return std::nullopt;
    if (!frame.data && int64_t{frame.width} * frame.height > kMostAskedPixels)
        return std::nullopt;
    auto const statistics = std::make_unique<CSbl>();
    statistics->measure(frame.data ? frame.row(skippedRows) : nullptr, frame.width,
                        frame.height - skippedRows, frame.pitch / 4);
    Uniformity result;
    result.value = std::floor(statistics->maxDeviation() * 100 + 0.5) / 100;
    for (int row = 0; row < statistics->rows(); ++row) {
        for (int column = 0; column < statistics->columns(); ++column) {
            CSbl::Block const& block = statistics->block(row, column);
            if (statistics->deviation(row, column) == statistics->maxDeviation())
                result.worstBlock.setCoords(block.left, block.top, block.right, block.bottom);
        }
    }
    return result;
}

void paintRing(Frame const& frame, QRect const& block, uint32_t pixel) {
    if (!frame.hasRgb32Pixels())
        return;
    for (int64_t d = 1; d <= 2; ++d) {
        Span const columns = clipped(block.left() - d, block.right() + d, frame.width);
        Span const rows = clipped(block.top() - d, block.bottom() + d, frame.height);
        // A block of an earlier, larger frame may lie wholly outside of this one, hence both bounds
        // everywhere.
        for (int64_t const y : {block.top() - d, block.bottom() + d - 1})
            if (y >= 0 && y < frame.height)
                paintRow(frame, y, columns, pixel);
        for (int64_t const x : {block.left() - d, block.right() + d - 1})
            if (x >= 0 && x < frame.width)
                paintColumn(frame, x, rows, pixel);
    }
}

} // namespace kestra
