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

// Paints the pixels left <= x < right, top <= y < bottom, as far as they lie in the frame.
void paint(Frame const& frame, int64_t left, int64_t top, int64_t right, int64_t bottom, uint32_t pixel) {
    left = std::max<int64_t>(left, 0);
    right = std::min<int64_t>(right, frame.width);
    bottom = std::min<int64_t>(bottom, frame.height);
    for (int64_t y = std::max<int64_t>(top, 0); y < bottom; ++y) {
        // The host shows the frame after the call, so the marker is painted into the host's own memory.
        auto* const row = const_cast<uint8_t*>(frame.row(y));
        for (int64_t x = left; x < right; ++x)
            std::memcpy(row + x * 4, &pixel, sizeof pixel);
    }
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
        int64_t const left = block.left() - d;
        int64_t const top = block.top() - d;
        int64_t const right = block.right() + d;
        int64_t const bottom = block.bottom() + d;
        paint(frame, left, top, right, top + 1, pixel);
        paint(frame, left, bottom - 1, right, bottom, pixel);
        paint(frame, left, top, left + 1, bottom, pixel);
        paint(frame, right - 1, top, right, bottom, pixel);
    }
}
} // namespace kestra
