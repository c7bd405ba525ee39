#include "simulator/solver/block_means.h"

#include <cmath>
#include <cstdlib>

namespace solver {
namespace {
constexpr int kMostBlocks = 64;       // along a side; fine enough that a lens is nearly linear within one
constexpr int kSmallestBlock = 8;     // pixels; 16 samples of a Bayer plane
constexpr double kNoiseLimit = 4;     // standard deviations from the median that still count
constexpr double kQuantisation = 1.5; // counts; the deviation of nearly noiseless samples is a step

struct Frame {
    unsigned char const* bytes;
    SensorLayout const& layout;
    uint32_t orientation;
    size_t bytesPerPixel;
    double whiteLevel;
};

/// Where the samples of one component lie in a delivered frame: in every `rowStep`th row from `firstRow` on
/// the columns `firstColumn`, `firstColumn + columnStep` and so on, each `byteOffset` bytes into its pixel.
struct Component {
    int firstColumn;
    int columnStep;
    int firstRow;
    int rowStep;
    size_t byteOffset;
};

/// A block's part of a side of the array.
struct Section {
    std::vector<int> samples; ///< where they lie along the delivered side
    double middle = 0;        ///< their mean position along the array's
};

std::vector<Section> sections(int side, int count, bool isReversed, int first, int step) {
    auto const edge = [&](int i) { return i == count ? side : int(int64_t(side) * i / count) & ~1; };
    auto result = std::vector<Section>(size_t(count));
    for (int i = 0; i < count; ++i) {
        Section& section = result[size_t(i)];
        for (int place = edge(i); place < edge(i + 1); ++place)
            if (int const delivered = isReversed ? side - 1 - place : place; delivered % step == first)
                section.samples.push_back(delivered);
        double const middle = 0.5 * (section.samples.front() + section.samples.back()) + 0.5;
        section.middle = isReversed ? side - middle : middle;
    }
    return result;
}

/// Means on nearly square blocks, still without planes.
BlockMeans blocksOf(SensorLayout const& layout) {
    auto const width = int(layout.width), height = int(layout.height);
    int const columns = std::min(width / kSmallestBlock, kMostBlocks);
    return {columns, std::clamp(height / (width / columns), 6, kMostBlocks), {}};
}

/// Mean of the samples that lie within the noise around their median: hot and dead pixels and specks of dust
/// do not count. `samples` is reordered and must not be empty.
double robustMean(std::vector<int>& samples) {
    int const middle = median(samples);
    double const limit = kNoiseLimit * scaledDeviation(samples, middle) + kQuantisation;
    int64_t sum = 0;
    int64_t count = 0;
    for (int const sample : samples) {
        bool const counts = std::abs(sample - middle) <= limit;
        sum += counts ? sample : 0;
        count += counts ? 1 : 0;
    }
    return double(sum) / double(count);
}

/// The samples of one component in a block.
std::vector<int> collect(Frame const& frame, size_t byteOffset, Section const& columns, Section const& rows) {
    std::vector<int> samples;
    samples.reserve(columns.samples.size() * rows.samples.size());
    for (int const y : rows.samples)
        for (int const x : columns.samples) {
            auto const pixel = size_t(y) * frame.layout.width + size_t(x);
            auto const* const bytes = frame.bytes + pixel * frame.bytesPerPixel + byteOffset;
            samples.push_back(frame.layout.sampleBytes == 2 ? bytes[0] | bytes[1] << 8 : bytes[0]);
        }
    return samples;
}

ComponentMeans readComponent(Frame const& frame, Component const& component) {
    auto const width = int(frame.layout.width), height = int(frame.layout.height);
    BlockMeans const blocks = blocksOf(frame.layout);
    auto const columns = sections(width, blocks.columns, (frame.orientation & 1) != 0, component.firstColumn,
                                  component.columnStep);
    auto const rows =
        sections(height, blocks.rows, (frame.orientation & 2) != 0, component.firstRow, component.rowStep);
    Eigen::ArrayXd const none(blocks.columns * blocks.rows);
    ComponentMeans means{none, none, none, none, none};
    double allSamples = 0;
    double allClipped = 0;
    Eigen::Index block = 0;
    for (Section const& row : rows)
        for (Section const& column : columns) {
            std::vector<int> samples = collect(frame, component.byteOffset, column, row);
            auto const clipped = double(std::count_if(
                samples.begin(), samples.end(), [&](int sample) { return sample >= frame.whiteLevel; }));
            auto const count = double(samples.size());
            means.u(block) = (column.middle - originIn(frame.layout.width)) / (0.5 * width);
            means.v(block) = (row.middle - originIn(frame.layout.height)) / (0.5 * height);
            means.radius(block) = std::hypot(column.middle - 0.5 * width, row.middle - 0.5 * height) /
                                  (0.5 * std::hypot(width, height));
            means.clipped(block) = clipped / count;
            means.mean(block) = robustMean(samples);
            allSamples += count;
            allClipped += clipped;
            ++block;
        }
    means.clippedShare = allClipped / allSamples;
    return means;
}
} // namespace

BlockMeans readRaw(void const* bytes, SensorLayout const& layout, uint32_t bayerPhase, uint32_t orientation) {
    constexpr PerPlane<Component> kRgb32 = {
        {{0, 1, 0, 1, 1}, {0, 1, 0, 1, 2}, {0, 1, 0, 1, 0}, {0, 1, 0, 1, 1}}};
    auto const column = int(bayerPhase & 1), row = int(bayerPhase >> 1 & 1);
    PerPlane<Component> const bayer = {{{1 - column, 2, row, 2, 0},
                                        {column, 2, row, 2, 0},
                                        {1 - column, 2, 1 - row, 2, 0},
                                        {column, 2, 1 - row, 2, 0}}};
    bool const isRgb = layout.input == SensorLayout::Input::Rgb32;
    Frame const frame{static_cast<unsigned char const*>(bytes), layout, orientation,
                      isRgb ? 4 : layout.sampleBytes, layout.whiteLevel};
    BlockMeans means = blocksOf(layout);
    for (size_t plane = 0; plane < kPlaneCount; ++plane) {
        means.planes[plane] = readComponent(frame, (isRgb ? kRgb32 : bayer)[plane]);
        Eigen::ArrayXd& mean = means.planes[plane].mean;
        mean = (mean - layout.blackLevel) / (layout.whiteLevel - layout.blackLevel);
    }
    return means;
}

BlockMeans readYcbcr(void const* bytes, SensorLayout const& layout, sf_YcbcrInput const& input) {
    Frame const frame{static_cast<unsigned char const*>(bytes), layout, input.orientation, 2,
                      double(input.lumaHigh)};
    // Chroma comes once for two pixels: Cb with the first, Cr with the second one.
    ComponentMeans luma = readComponent(frame, {0, 1, 0, 1, 0});
    auto const chroma = [&](int firstColumn) -> Eigen::ArrayXd {
        return (readComponent(frame, {firstColumn, 2, 0, 1, 1}).mean - double(input.chromaZero)) /
               double(input.chromaHigh);
    };
    Eigen::ArrayXd const blue = chroma(0);
    Eigen::ArrayXd const red = chroma(1);
    luma.mean = (luma.mean - double(input.lumaLow)) / (double(input.lumaHigh) - input.lumaLow);
    BlockMeans means = blocksOf(layout);
    means.planes.fill(luma);
    // ITU-R BT.601: the luma weights 0.299, 0.587, 0.114 and chroma scaled to a span of 1.
    means.planes[Plane::Red].mean += 1.402 * red;
    means.planes[Plane::Blue].mean += 1.772 * blue;
    for (Plane const green : {Plane::GreenRed, Plane::GreenBlue})
        means.planes[green].mean -= 0.344136 * blue + 0.714136 * red;
    return means;
}
} // namespace solver
