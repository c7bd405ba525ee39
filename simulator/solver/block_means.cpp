#include "simulator/solver/block_means.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>

namespace solver {
namespace {
constexpr int kMostColumns = 64;        // fine enough that a lens is nearly linear within a block
constexpr int kSmallestBlock = 8;       // pixels; 16 samples of a Bayer plane
constexpr double kNoiseLimit = 4;       // standard deviations from the median that still count
constexpr double kSigmaPerMad = 1.4826; // standard deviation of a normal distribution per median deviation
constexpr double kQuantisation = 1.5;   // counts; the deviation of nearly noiseless samples is a step

std::vector<int> evenEdges(int length, int blocks) {
    std::vector<int> edges;
    for (int i = 0; i < blocks; ++i)
        edges.push_back(static_cast<int>(static_cast<int64_t>(length) * i / blocks) & ~1);
    edges.push_back(length);
    return edges;
}

/// Block edges as the delivered picture shows them.
std::vector<int> deliveredEdges(std::vector<int> edges, bool reversed) {
    if (reversed) {
        int const length = edges.back();
        std::reverse(edges.begin(), edges.end());
        for (int& edge : edges)
            edge = length - edge;
    }
    return edges;
}

/// First position of the series first, first + step, ... at or after `start`.
int firstFrom(int start, int first, int step) { return start + ((first - start) % step + step) % step; }

/// Mean sample position of each block along one axis, in array coordinates.
std::vector<double> positions(std::vector<int> const& edges, int first, int step, bool reversed) {
    int const length = edges.back();
    std::vector<double> result;
    for (size_t i = 0; i + 1 < edges.size(); ++i) {
        int const begin = firstFrom(edges[i], first, step);
        int const last = begin + (edges[i + 1] - 1 - begin) / step * step;
        double const middle = 0.5 * (begin + last) + 0.5;
        result.push_back(reversed ? length - middle : middle);
    }
    if (reversed)
        std::reverse(result.begin(), result.end());
    return result;
}

uint16_t sampleAt(unsigned char const* bytes, bool twoBytes) {
    return static_cast<uint16_t>(twoBytes ? bytes[0] | bytes[1] << 8 : bytes[0]);
}

/// Samples of one component in the blocks of one block row.
using BlockRow = std::vector<std::vector<uint16_t>>;

void collectRow(unsigned char const* row, ComponentSampling const& component, FrameSampling const& sampling,
                std::vector<int> const& columnEdges, BlockRow& blocks) {
    for (size_t i = 0; i + 1 < columnEdges.size(); ++i) {
        auto& samples = blocks[i];
        for (int x = firstFrom(columnEdges[i], component.firstColumn, component.columnStep);
             x < columnEdges[i + 1]; x += component.columnStep)
            samples.push_back(
                sampleAt(row + static_cast<size_t>(x) * sampling.bytesPerPixel + component.byteOffset,
                         sampling.twoByteSamples));
    }
}

/// Mean of the samples that lie within the noise around their median: hot and dead pixels and specks of dust
/// do not count. `samples` is reordered and must not be empty.
double robustMean(std::span<uint16_t> samples) {
    auto const middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    int const median = *middle;
    std::vector<uint16_t> deviations(samples.size());
    std::transform(samples.begin(), samples.end(), deviations.begin(),
                   [&](uint16_t sample) { return static_cast<uint16_t>(std::abs(sample - median)); });
    auto const middleDeviation = deviations.begin() + (middle - samples.begin());
    std::nth_element(deviations.begin(), middleDeviation, deviations.end());
    double const limit = kNoiseLimit * kSigmaPerMad * *middleDeviation + kQuantisation;
    int64_t sum = 0;
    int64_t count = 0;
    for (uint16_t const sample : samples) {
        bool const counts = std::abs(sample - median) <= limit;
        sum += counts ? sample : 0;
        count += counts ? 1 : 0;
    }
    return static_cast<double>(sum) / static_cast<double>(count);
}

/// Reduces a block row's samples to their means and empties it.
struct RowReduction {
    ComponentMeans& means;
    double whiteLevel;
    size_t samples = 0;
    size_t clipped = 0;

    void reduce(BlockRow& row, size_t firstBlock, bool mirrored) {
        for (size_t i = 0; i < row.size(); ++i) {
            auto& block = row[i];
            auto const above = static_cast<size_t>(std::count_if(
                block.begin(), block.end(), [&](uint16_t sample) { return sample >= whiteLevel; }));
            samples += block.size();
            clipped += above;
            size_t const place = firstBlock + (mirrored ? row.size() - 1 - i : i);
            means.clipped[place] = static_cast<double>(above) / static_cast<double>(block.size());
            means.mean[place] = robustMean(block);
            block.clear();
        }
    }
};

/// Reads a frame of the array's size once, in memory order, into the means of each component.
std::vector<ComponentMeans> readBlocks(void const* frame, Geometry const& array, BlockGrid const& grid,
                                       FrameSampling const& sampling, double whiteLevel) {
    auto const columnEdges = deliveredEdges(grid.columnEdges, sampling.mirrored);
    auto const rowEdges = deliveredEdges(grid.rowEdges, sampling.upsideDown);
    auto const columns = static_cast<size_t>(grid.columns());
    auto const rows = static_cast<size_t>(grid.rows());
    std::vector<ComponentMeans> means(sampling.components.size());
    std::vector<RowReduction> reductions;
    for (size_t i = 0; i < means.size(); ++i) {
        auto const& component = sampling.components[i];
        means[i].x = positions(columnEdges, component.firstColumn, component.columnStep, sampling.mirrored);
        means[i].y = positions(rowEdges, component.firstRow, component.rowStep, sampling.upsideDown);
        means[i].mean.resize(grid.blocks());
        means[i].clipped.resize(grid.blocks());
        reductions.push_back({means[i], whiteLevel});
    }
    std::vector<BlockRow> blocks(means.size(), BlockRow(columns));
    size_t const rowBytes = static_cast<size_t>(array.width) * sampling.bytesPerPixel;
    auto const* row = static_cast<unsigned char const*>(frame);
    for (size_t blockRow = 0; blockRow < rows; ++blockRow) {
        for (int y = rowEdges[blockRow]; y < rowEdges[blockRow + 1]; ++y, row += rowBytes)
            for (size_t i = 0; i < means.size(); ++i)
                if (y % sampling.components[i].rowStep == sampling.components[i].firstRow)
                    collectRow(row, sampling.components[i], sampling, columnEdges, blocks[i]);
        size_t const arrayRow = sampling.upsideDown ? rows - 1 - blockRow : blockRow;
        for (size_t i = 0; i < means.size(); ++i)
            reductions[i].reduce(blocks[i], arrayRow * columns, sampling.mirrored);
    }
    for (size_t i = 0; i < means.size(); ++i)
        means[i].clippedShare =
            static_cast<double>(reductions[i].clipped) / static_cast<double>(reductions[i].samples);
    return means;
}

/// Sets every mean to a linear function of itself.
void rescale(ComponentMeans& component, double zero, double span) {
    for (double& mean : component.mean)
        mean = (mean - zero) / span;
}

BlockMeans planesOf(BlockGrid const& grid, ComponentMeans const& red, ComponentMeans const& green,
                    ComponentMeans const& blue) {
    BlockMeans means{grid.columns(), grid.rows(), {}};
    means.planes[kRed] = red;
    means.planes[kGreenRed] = means.planes[kGreenBlue] = green;
    means.planes[kBlue] = blue;
    return means;
}
} // namespace

BlockGrid::BlockGrid(Geometry const& array) {
    int const columns = std::min(array.width / kSmallestBlock, kMostColumns);
    int const square = std::max(array.width / columns, kSmallestBlock);
    columnEdges = evenEdges(array.width, columns);
    rowEdges = evenEdges(array.height, std::clamp(array.height / square, 6, kMostColumns));
}

BlockMeans readRaw(void const* frame, SensorLayout const& layout, FrameSampling const& sampling) {
    BlockGrid const grid(layout.array);
    auto components = readBlocks(frame, layout.array, grid, sampling, layout.whiteLevel);
    for (ComponentMeans& component : components)
        rescale(component, layout.blackLevel, layout.whiteLevel - layout.blackLevel);
    if (components.size() != kPlanes)
        return planesOf(grid, components[0], components[1], components[2]);
    BlockMeans means{grid.columns(), grid.rows(), {}};
    std::move(components.begin(), components.end(), means.planes.begin());
    return means;
}

BlockMeans readYcbcr(void const* frame, SensorLayout const& layout, sf_YcbcrInput const& input,
                     FrameSampling const& sampling) {
    BlockGrid const grid(layout.array);
    auto components = readBlocks(frame, layout.array, grid, sampling, input.lumaHigh);
    ComponentMeans& luma = components[0];
    ComponentMeans& chromaBlue = components[1];
    ComponentMeans& chromaRed = components[2];
    rescale(luma, input.lumaLow, static_cast<double>(input.lumaHigh) - input.lumaLow);
    rescale(chromaBlue, input.chromaZero, input.chromaHigh);
    rescale(chromaRed, input.chromaZero, input.chromaHigh);
    ComponentMeans red = luma;
    ComponentMeans green = luma;
    ComponentMeans blue = luma;
    for (size_t i = 0; i < luma.mean.size(); ++i) {
        // ITU-R BT.601: the luma weights 0.299, 0.587, 0.114 and chroma scaled to a span of 1.
        red.mean[i] += 1.402 * chromaRed.mean[i];
        green.mean[i] -= 0.344136 * chromaBlue.mean[i] + 0.714136 * chromaRed.mean[i];
        blue.mean[i] += 1.772 * chromaBlue.mean[i];
    }
    return planesOf(grid, red, green, blue);
}
} // namespace solver
