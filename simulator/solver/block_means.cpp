#include "simulator/solver/block_means.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <span>

namespace solver {
namespace {
constexpr int kMostColumns = 64;        // fine enough that a lens is nearly linear within a block
constexpr int kSmallestBlock = 8;       // pixels; 16 samples of a Bayer plane
constexpr double kNoiseLimit = 4;       // standard deviations from the median that still count
constexpr double kSigmaPerMad = 1.4826; // standard deviation of a normal distribution per median deviation
constexpr double kQuantisation = 1.5;   // counts; the deviation of nearly noiseless samples is a step

/// The blocks into which the array is cut, as the delivered picture shows them.
struct BlockGrid {
    std::vector<int> columnEdges; ///< ascending, one more than columns
    std::vector<int> rowEdges;

    BlockGrid(Geometry const& array, FrameSampling const& sampling) {
        int const columns = std::min(array.width / kSmallestBlock, kMostColumns);
        int const square = std::max(array.width / columns, kSmallestBlock);
        int const rows = std::clamp(array.height / square, 6, kMostColumns);
        columnEdges = edges(array.width, columns, sampling.mirrored);
        rowEdges = edges(array.height, rows, sampling.upsideDown);
    }
    [[nodiscard]] size_t columns() const { return columnEdges.size() - 1; }
    [[nodiscard]] size_t rows() const { return rowEdges.size() - 1; }

private:
    static std::vector<int> edges(int length, int blocks, bool reversed) {
        std::vector<int> result;
        for (int i = 0; i < blocks; ++i)
            result.push_back(int(int64_t(length) * i / blocks) & ~1);
        result.push_back(length);
        if (reversed) {
            std::reverse(result.begin(), result.end());
            for (int& edge : result)
                edge = length - edge;
        }
        return result;
    }
};

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

/// Mean of the samples that lie within the noise around their median: hot and dead pixels and specks of dust
/// do not count. `samples` is reordered and must not be empty.
double robustMean(std::span<uint16_t> samples) {
    auto const middle = samples.begin() + std::ptrdiff_t(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    int const median = *middle;
    std::vector<uint16_t> deviations(samples.size());
    std::transform(samples.begin(), samples.end(), deviations.begin(),
                   [&](uint16_t sample) { return uint16_t(std::abs(sample - median)); });
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
    return double(sum) / double(count);
}

/// The samples of one component in a block of the delivered picture.
void collect(unsigned char const* frame, int width, FrameSampling const& sampling,
             ComponentSampling const& component, std::span<int const> columns, std::span<int const> rows,
             std::vector<uint16_t>& samples) {
    samples.clear();
    for (int y = firstFrom(rows[0], component.firstRow, component.rowStep); y < rows[1];
         y += component.rowStep)
        for (int x = firstFrom(columns[0], component.firstColumn, component.columnStep); x < columns[1];
             x += component.columnStep) {
            auto const pixel = size_t(y) * size_t(width) + size_t(x);
            auto const* const bytes = frame + pixel * sampling.bytesPerPixel + component.byteOffset;
            samples.push_back(uint16_t(sampling.twoByteSamples ? bytes[0] | bytes[1] << 8 : bytes[0]));
        }
}

ComponentMeans readComponent(void const* frame, int width, BlockGrid const& grid,
                             FrameSampling const& sampling, ComponentSampling const& component,
                             double whiteLevel) {
    ComponentMeans means;
    means.x = positions(grid.columnEdges, component.firstColumn, component.columnStep, sampling.mirrored);
    means.y = positions(grid.rowEdges, component.firstRow, component.rowStep, sampling.upsideDown);
    means.mean.resize(grid.columns() * grid.rows());
    means.clipped.resize(means.mean.size());
    double allSamples = 0;
    double allClipped = 0;
    std::vector<uint16_t> samples;
    for (size_t row = 0; row < grid.rows(); ++row)
        for (size_t column = 0; column < grid.columns(); ++column) {
            collect(static_cast<unsigned char const*>(frame), width, sampling, component,
                    std::span(grid.columnEdges).subspan(column, 2), std::span(grid.rowEdges).subspan(row, 2),
                    samples);
            auto const clipped = double(std::count_if(samples.begin(), samples.end(),
                                                      [&](uint16_t sample) { return sample >= whiteLevel; }));
            auto const count = double(samples.size());
            size_t const arrayRow = sampling.upsideDown ? grid.rows() - 1 - row : row;
            size_t const place =
                arrayRow * grid.columns() + (sampling.mirrored ? grid.columns() - 1 - column : column);
            means.clipped[place] = clipped / count;
            means.mean[place] = robustMean(samples);
            allSamples += count;
            allClipped += clipped;
        }
    means.clippedShare = allClipped / allSamples;
    return means;
}

/// Components of a frame, one each of the sampling's.
std::vector<ComponentMeans> readComponents(void const* frame, SensorLayout const& layout,
                                           FrameSampling const& sampling, double whiteLevel) {
    Geometry const array(layout);
    BlockGrid const grid(array, sampling);
    std::vector<ComponentMeans> components;
    for (ComponentSampling const& component : sampling.components)
        components.push_back(readComponent(frame, array.width, grid, sampling, component, whiteLevel));
    return components;
}

/// Sets every mean to a linear function of itself.
void rescale(ComponentMeans& component, double zero, double span) {
    for (double& mean : component.mean)
        mean = (mean - zero) / span;
}

BlockMeans asMeans(PerPlane<ComponentMeans> planes) {
    auto const& first = planes.front();
    return {int(first.x.size()), int(first.y.size()), std::move(planes)};
}
} // namespace

FrameSampling rawSampling(SensorLayout const& layout, uint32_t bayerPhase, uint32_t orientation) {
    FrameSampling sampling(orientation);
    if (layout.input == SensorLayout::Input::Rgb32) {
        sampling.bytesPerPixel = 4;
        for (size_t const byte : {2, 1, 0})
            sampling.components.push_back({0, 1, 0, 1, byte});
        return sampling;
    }
    int const redColumn = int(bayerPhase & 1);
    int const redRow = int(bayerPhase >> 1 & 1);
    auto const component = [](int column, int row) { return ComponentSampling{column, 2, row, 2, 0}; };
    sampling.components.resize(kPlaneCount);
    sampling.components[Plane::Red] = component(redColumn, redRow);
    sampling.components[Plane::GreenRed] = component(1 - redColumn, redRow);
    sampling.components[Plane::GreenBlue] = component(redColumn, 1 - redRow);
    sampling.components[Plane::Blue] = component(1 - redColumn, 1 - redRow);
    sampling.twoByteSamples = layout.sampleBytes == 2;
    sampling.bytesPerPixel = sampling.twoByteSamples ? 2 : 1;
    return sampling;
}

std::optional<FrameSampling> ycbcrSampling(sf_YcbcrInput const& input) {
    constexpr uint32_t kOrder[] = {0, 1, 2, 3};
    if (!std::equal(std::begin(kOrder), std::end(kOrder), std::begin(input.componentOrder)))
        return std::nullopt;
    FrameSampling sampling(input.orientation);
    sampling.bytesPerPixel = 2;
    // Chroma comes once for two pixels: Cb with the first, Cr with the second one.
    sampling.components = {{0, 1, 0, 1, 0}, {0, 2, 0, 1, 1}, {1, 2, 0, 1, 1}};
    return sampling;
}

BlockMeans readRaw(void const* frame, SensorLayout const& layout, FrameSampling const& sampling) {
    auto components = readComponents(frame, layout, sampling, layout.whiteLevel);
    for (ComponentMeans& component : components)
        rescale(component, layout.blackLevel, layout.whiteLevel - layout.blackLevel);
    if (components.size() != kPlaneCount)
        return asMeans({components[1], components[0], components[2], components[1]});
    PerPlane<ComponentMeans> planes;
    std::move(components.begin(), components.end(), planes.begin());
    return asMeans(std::move(planes));
}

BlockMeans readYcbcr(void const* frame, SensorLayout const& layout, sf_YcbcrInput const& input,
                     FrameSampling const& sampling) {
    auto components = readComponents(frame, layout, sampling, input.lumaHigh);
    ComponentMeans& luma = components[0];
    ComponentMeans& chromaBlue = components[1];
    ComponentMeans& chromaRed = components[2];
    rescale(luma, input.lumaLow, double(input.lumaHigh) - input.lumaLow);
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
    return asMeans({green, red, blue, green});
}
} // namespace solver
