#pragma once

#include "pictures/channel_sums.h"
#include "pictures/lab.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Block colour statistics of one RGB-32 picture: mean colour of each block of a grid, and how far its chroma
/// lies from the mean chroma of all blocks. About 45 KB: made on the heap for one measurement.
class CSbl {
public:
    static constexpr int kMaxRows = 18;
    static constexpr int kMaxColumns = int(kestra::kMaxRanges);

    /// One block: mean channel values (0 to 255), their colour, and its pixels (right and bottom exclusive).
    struct Block {
        double red{};
        double green{};
        double blue{};
        kestra::Lab lab;
        int32_t left{};
        int32_t top{};
        int32_t right{};
        int32_t bottom{};
    };

    CSbl() = default;
    CSbl(CSbl const&) = delete;
    CSbl& operator=(CSbl const&) = delete;

    /// An operation of chart measurements; answers 1024.
    virtual uint32_t chartScale(uint32_t first, uint32_t second);
    /// The pixel of a measurement that is given no pixels: mid grey.
    virtual uint32_t pixelAt(int32_t x, int32_t y);
    virtual ~CSbl() = default;

    /// Measures a picture of `width` x `height` 4-byte pixels, both above 0, whose rows lie `pitchInPixels`
    /// pixels apart; a negative pitch walks upwards. With null pixels every pixel is asked of `pixelAt`.
    void measure(void const* pixels, int32_t width, int32_t height, int32_t pitchInPixels);

    [[nodiscard]] int columns() const { return m_columns; }
    [[nodiscard]] int rows() const { return m_rows; }
    [[nodiscard]] Block const& block(int row, int column) const {
        return m_blocks[size_t(row)][size_t(column)];
    }
    /// Distance of a block's chroma from the mean chroma.
    [[nodiscard]] double deviation(int row, int column) const {
        return m_deviations[size_t(row)][size_t(column)];
    }
    [[nodiscard]] double maxDeviation() const { return m_maxDeviation; }

private:
    void placeBlocks(int32_t width, int32_t height);
    void averageBlocks(void const* pixels, int32_t pitchInPixels);
    kestra::ChannelSums askedSums(Block const& block);
    void rateBlocks();

    uint32_t m_patchCount = 36;
    std::array<kestra::Lab, 36> m_patches{}; // no chart is measured in this build
    uint32_t m_chartState{};
    int32_t m_columns{};
    int32_t m_rows{};
    std::array<std::array<Block, kMaxColumns>, kMaxRows> m_blocks{};
    double m_meanA{};
    double m_meanB{};
    std::array<std::array<double, kMaxColumns>, kMaxRows> m_deviations{};
    double m_maxDeviation{};
};
