#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestra {
/// Exact sums of the channel values of RGB-32 pixels.
struct ChannelSums {
    uint64_t red = 0;
    uint64_t green = 0;
    uint64_t blue = 0;
};

/// Columns first <= x < last of a picture; not empty.
struct ColumnRange {
    int32_t first;
    int32_t last;
};

inline constexpr size_t kMaxRanges = 32;

/// Adds the pixels of each column range, over `rows` picture rows that lie `pitch` bytes apart from
/// `firstRow` on (negative: upwards), to the sums of the same index. There are one to kMaxRanges of them;
/// they ascend and may overlap. No alignment is needed.
void addChannelSums(uint8_t const* firstRow, ptrdiff_t pitch, int64_t rows,
                    std::span<ColumnRange const> ranges, std::span<ChannelSums> sums);
} // namespace kestra
