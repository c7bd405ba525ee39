#include "pictures/channel_sums.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace kestra {
// A pixel is read as little-endian words: blue and green lie in its low half, red and an unused byte in the
// high one. Two channels are summed side by side in one word, with one shift and no mask for the lower one:
// while its sum fits, it is what remains of the sum of whole words (modulo the word) without the upper one's
// share. The loops are plain so that every compiler turns them into vector instructions.
static_assert(std::endian::native == std::endian::little);

#if defined(__GNUC__) && !defined(__clang__)
// GCC would load each word of a picture row twice, once for each of its two uses.
#pragma GCC optimize("no-tree-ter")
#endif

namespace {
constexpr int kMaxAdds = 257; // of 255 each, before a sum of 16 bits could overflow

template <typename Word>
Word wordAt(void const* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Adds half pixels of several rows to the sums of their columns: of whole words, and of the upper channels
// alone. Inlined, it takes on the instructions that its caller may use. Without the promise that sums and
// rows lie apart, no compiler would turn it into vector instructions.
template <int Rows>
void addRows(uint8_t const* bytes, ptrdiff_t pitch, size_t halves, uint16_t* __restrict whole,
             uint16_t* __restrict upper) {
    for (size_t i = 0; i < halves; ++i) {
        uint16_t wholeSum = whole[i];
        uint16_t upperSum = upper[i];
        for (int row = 0; row < Rows; ++row) {
            auto const half = wordAt<uint16_t>(bytes + row * pitch + ptrdiff_t(i) * 2);
            wholeSum = uint16_t(wholeSum + half);
            upperSum = uint16_t(upperSum + (half >> 8));
        }
        whole[i] = wholeSum;
        upper[i] = upperSum;
    }
}

using AddRows = decltype(&addRows<8>);

#if defined(__GNUC__) && defined(__x86_64__)
[[gnu::target("avx2")]] void addEightRowsAvx2(uint8_t const* bytes, ptrdiff_t pitch, size_t halves,
                                              uint16_t* __restrict whole, uint16_t* __restrict upper) {
    addRows<8>(bytes, pitch, halves, whole, upper);
}

AddRows chooseAddEightRows() { return __builtin_cpu_supports("avx2") ? addEightRowsAvx2 : addRows<8>; }
#else
AddRows chooseAddEightRows() { return addRows<8>; }
#endif

// Sums down each half pixel's column. The picture's rows are added several at a time, so that a column's sum
// is loaded and stored less often than the pixels. The sums of a strip stay in the first-level cache; those
// of wider pictures would travel between the caches with every row.
class ColumnSums {
public:
    static constexpr int32_t kMaxWidth = 4096;
    static constexpr int kMaxRows = kMaxAdds;

    // `rows` may be up to kMaxRows, `width` up to kMaxWidth pixels.
    ColumnSums(uint8_t const* firstRow, ptrdiff_t pitch, int rows, int32_t width, AddRows addEight) {
        size_t const halves = size_t(width) * 2;
        std::fill_n(m_lower.begin(), halves, uint16_t{0});
        std::fill_n(m_upper.begin(), halves, uint16_t{0});
        for (; rows >= 8; rows -= 8, firstRow += 8 * pitch)
            addEight(firstRow, pitch, halves, m_lower.data(), m_upper.data());
        for (; rows >= 2; rows -= 2, firstRow += 2 * pitch)
            addRows<2>(firstRow, pitch, halves, m_lower.data(), m_upper.data());
        if (rows == 1)
            addRows<1>(firstRow, pitch, halves, m_lower.data(), m_upper.data());
        for (size_t i = 0; i < halves; ++i)
            m_lower[i] = uint16_t(m_lower[i] - (m_upper[i] << 8));
    }

    void addTo(ChannelSums& sums, ColumnRange range) const {
        uint32_t red = 0;
        uint32_t green = 0;
        uint32_t blue = 0;
        for (int32_t x = range.first; x < range.last; ++x) {
            auto const blueAndRed = wordAt<uint32_t>(&m_lower[size_t(x) * 2]);
            auto const greenAndUnused = wordAt<uint32_t>(&m_upper[size_t(x) * 2]);
            blue += blueAndRed & 0xFFFF;
            red += blueAndRed >> 16;
            green += greenAndUnused & 0xFFFF;
        }
        sums.red += red;
        sums.green += green;
        sums.blue += blue;
    }

private:
    std::array<uint16_t, size_t{kMaxWidth} * 2> m_lower; // blue and red
    std::array<uint16_t, size_t{kMaxWidth} * 2> m_upper; // green and unused
};

void addColumns(uint8_t const* firstRow, ptrdiff_t pitch, int64_t rows, std::span<ColumnRange const> ranges,
                std::span<ChannelSums> sums) {
    int32_t const left = ranges.front().first;
    int32_t const width = ranges.back().last - left;
    while (rows > 0) {
        int const count = int(std::min<int64_t>(rows, ColumnSums::kMaxRows));
        ColumnSums const columns(firstRow + ptrdiff_t{left} * 4, pitch, count, width, chooseAddEightRows());
        for (size_t i = 0; i < ranges.size(); ++i)
            columns.addTo(sums[i], {ranges[i].first - left, ranges[i].last - left});
        rows -= count;
        firstRow += count * pitch;
    }
}

// Pixels that follow one another.
void addRun(uint8_t const* bytes, int32_t count, ChannelSums& sums) {
    while (count > 0) {
        int const part = std::min(count, kMaxAdds);
        uint32_t whole = 0;
        uint32_t upper = 0;
        for (int i = 0; i < part; ++i) {
            auto const pixel = wordAt<uint32_t>(bytes + ptrdiff_t{i} * 4);
            whole += pixel;
            upper += (pixel >> 8) & 0x00FF00FF;
        }
        uint32_t const lower = whole - (upper << 8);
        sums.blue += lower & 0xFFFF;
        sums.red += lower >> 16;
        sums.green += upper & 0xFFFF;
        bytes += ptrdiff_t{part} * 4;
        count -= part;
    }
}

// Where rows are read whole, memory is fastest in its own order, unless the rows are so narrow that all their
// sums stay in the first-level cache. Where they are skipped in part, several rows at once keep it busier.
bool isFasterByColumns(int32_t width, ptrdiff_t pitch) {
    constexpr int32_t kNarrow = 2560;
    bool const skipsHalf = ptrdiff_t{width} * 8 <= std::abs(pitch);
    return width <= kNarrow || (skipsHalf && width <= ColumnSums::kMaxWidth);
}
} // namespace

void addChannelSums(uint8_t const* firstRow, ptrdiff_t pitch, int64_t rows,
                    std::span<ColumnRange const> ranges, std::span<ChannelSums> sums) {
    if (isFasterByColumns(ranges.back().last - ranges.front().first, pitch))
        return addColumns(firstRow, pitch, rows, ranges, sums);
    for (int64_t y = 0; y < rows; ++y, firstRow += pitch)
        for (size_t i = 0; i < ranges.size(); ++i)
            addRun(firstRow + ptrdiff_t{ranges[i].first} * 4, ranges[i].last - ranges[i].first, sums[i]);
}
} // namespace kestra
