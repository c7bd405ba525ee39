#include "simulator/camera/read_out.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace simulator {
namespace {
constexpr auto kWhite = float(kConverterWhite);

/// The samples of one exposure as 12-bit counts above 0, row by row in the order of the delivered picture.
using Mosaic = std::vector<uint16_t>;

constexpr size_t kTableBits = 12;
constexpr size_t kTableSize = size_t(1) << kTableBits;
constexpr size_t kDrawsPerWord = 5; // draws of 12 bits out of 64

// The quantiles of the normal distribution in equal steps of probability, scaled to variance 1: a pixel's
// noise is then one look-up by 12 random bits.
std::array<float, kTableSize> quantiles() {
    std::array<double, kTableSize> exact{};
    double quantile = -4;
    double squares = 0;
    for (size_t i = 0; i < kTableSize; ++i) {
        double const probability = (double(i) + 0.5) / double(kTableSize);
        for (int step = 0; step < 20; ++step) { // Newton, starting from the neighbour
            double const missing = probability - 0.5 * std::erfc(-quantile / std::numbers::sqrt2);
            double const density = std::exp(-0.5 * quantile * quantile) / std::sqrt(2 * std::numbers::pi);
            quantile += missing / density;
        }
        exact[i] = quantile;
        squares += quantile * quantile;
    }
    double const scale = std::sqrt(double(kTableSize) / squares);
    std::array<float, kTableSize> table{};
    std::transform(exact.begin(), exact.end(), table.begin(), [&](double x) { return float(x * scale); });
    return table;
}

// Fills normally distributed values of variance 1 that are a function of `stream` alone.
void fillGaussian(uint64_t stream, std::vector<float>& values) {
    static std::array<float, kTableSize> const table = quantiles();
    uint64_t counter = mixed(stream);
    size_t i = 0;
    while (i < values.size()) {
        uint64_t bits = mixed(counter++);
        for (size_t draw = 0; draw < kDrawsPerWord && i < values.size(); ++draw, bits >>= kTableBits)
            values[i++] = table[bits & (kTableSize - 1)];
    }
}

// Of a number that is not negative. Vectors do so to whole rows, which lround() keeps them from.
int nearest(float value) { return int(value + 0.5F); } // NOLINT(bugprone-incorrect-roundings)

float quantised(float counts) { return float(nearest(std::min(std::max(counts, 0.0F), kWhite))); }

// A row of the array in the converter's counts. The same row of the same exposure is always the same.
void convertRow(Exposing const& exposing, uint32_t y, std::vector<float>& row) {
    ReadOut const& readOut = exposing.readOut;
    auto const scale = float(exposing.countsPerLight);
    auto const pedestal = float(readOut.pedestal);
    auto const shotVariance = float(1 / readOut.electronsPerCount); // for each count of signal
    auto const readVariance = float(std::pow(readOut.readNoise / readOut.electronsPerCount, 2));
    fillGaussian(mixed(exposing.noiseStream) + y, row);
    float const* const light = &exposing.light[size_t(y) * row.size()];
    float* const samples = row.data(); // of the noise at first
    size_t const width = row.size();
    for (size_t x = 0; x < width; ++x) {
        float const signal = light[x] * scale;
        float const deviation = std::sqrt(signal * shotVariance + readVariance);
        samples[x] = quantised(signal + deviation * samples[x] + pedestal);
    }
}

Mosaic exposeMosaic(Exposing const& exposing) {
    SensorArray const& array = exposing.array;
    auto const pedestal = float(exposing.readOut.pedestal);
    Mosaic mosaic(array.pixels());
    std::vector<float> samples(array.width);
    for (uint32_t row = 0; row < array.height; ++row) {
        uint32_t const y = array.arrayRow(row);
        convertRow(exposing, y, samples);
        if (exposing.gains)
            std::transform(samples.begin(), samples.end(), &(*exposing.gains)[size_t(y) * array.width],
                           samples.begin(), [pedestal](float sample, float gain) {
                               return quantised((sample - pedestal) * gain + pedestal);
                           });
        if (bool const isMirrored = array.arrayColumn(0) != 0; isMirrored)
            std::reverse(samples.begin(), samples.end());
        std::transform(samples.begin(), samples.end(), &mosaic[size_t(row) * array.width],
                       [](float sample) { return uint16_t(int(sample)); });
    }
    return mosaic;
}

// ITU-R BT.601: luma weights of red and blue; green has the rest.
constexpr float kRedWeight = 0.299F;
constexpr float kBlueWeight = 0.114F;
constexpr float kGreenWeight = 1 - kRedWeight - kBlueWeight;
constexpr float kChromaZero = 128;

char rounded(float value) { return char(uint8_t(nearest(std::clamp(value, 0.0F, 255.0F)))); }

// The four samples of a 2 x 2 cell make one colour; which is which follows from the delivered phase. Chroma
// and luma are then those of the cell: no detail is invented.
void codeYcbcr(Exposing const& exposing, Mosaic const& mosaic, Frame& frame) {
    ReadOut const& readOut = exposing.readOut;
    auto const black = float(readOut.pedestal);
    auto const scale = float(1 / (kConverterWhite - readOut.pedestal));
    auto const lumaLow = float(readOut.lumaLow);
    auto const lumaSpan = float(readOut.lumaHigh - readOut.lumaLow);
    auto const chromaSpan = float(readOut.chromaSpan);
    uint32_t const phase = exposing.array.deliveredPhase();
    char* const pixels = frame.pixels.data();
    for (uint32_t y = 0; y < exposing.array.height; y += 2)
        for (uint32_t x = 0; x < frame.width; x += 2) {
            auto const level = [&](uint32_t site) { // bit 0: column, bit 1: row
                float const sample = mosaic[size_t(y + (site >> 1)) * frame.width + x + (site & 1)];
                return std::clamp((sample - black) * scale, 0.0F, 1.0F);
            };
            float const red = level(phase), blue = level(phase ^ 3);
            float const green = (level(phase ^ 1) + level(phase ^ 2)) / 2;
            float const luma = kRedWeight * red + kGreenWeight * green + kBlueWeight * blue;
            float const blueDifference = (blue - luma) / (2 * (1 - kBlueWeight));
            float const redDifference = (red - luma) / (2 * (1 - kRedWeight));
            char const code = rounded(lumaLow + lumaSpan * luma);
            std::array const cell = {code, rounded(kChromaZero + chromaSpan * blueDifference), code,
                                     rounded(kChromaZero + chromaSpan * redDifference)};
            for (uint32_t const row : {y, y + 1})
                std::copy(cell.begin(), cell.end(), pixels + size_t{row} * frame.pitch + size_t{2} * x);
        }
}
} // namespace

std::optional<double> centreRedToBlue(Exposing const& exposing) {
    SensorArray const& array = exposing.array;
    auto const pedestal = float(exposing.readOut.pedestal);
    constexpr uint32_t kShare = 8; // of the width and of the height
    uint32_t const left = array.width * (kShare - 1) / (2 * kShare) & ~1U;
    uint32_t const top = array.height * (kShare - 1) / (2 * kShare) & ~1U;
    // The row of a cell that holds red, and the one that holds blue.
    std::vector<float> reds(array.width);
    std::vector<float> blues(array.width);
    uint32_t const redRow = array.bayerPhase >> 1;
    uint32_t const redColumn = array.bayerPhase & 1;
    double red = 0, blue = 0, cells = 0, usable = 0;
    for (uint32_t y = top; y < top + array.height / kShare; y += 2) {
        convertRow(exposing, y + redRow, reds);
        convertRow(exposing, y + (redRow ^ 1), blues);
        for (uint32_t x = left; x < left + array.width / kShare; x += 2, ++cells) {
            float const r = reds[x + redColumn], b = blues[x + (redColumn ^ 1)];
            if (std::max(r, b) >= kWhite)
                continue;
            ++usable;
            red += double(r - pedestal);
            blue += double(b - pedestal);
        }
    }
    constexpr double kUsableShare = 0.95; // with fewer cells left, the noise would choose them
    constexpr double kLeastSignal = 0.5;  // counts
    if (usable < kUsableShare * cells || std::min(red, blue) < kLeastSignal * usable)
        return std::nullopt;
    return red / blue;
}

Frame exposeFrame(Exposing const& exposing) {
    FrameType const format = exposing.readOut.format;
    SensorArray const& array = exposing.array;
    Mosaic const mosaic = exposeMosaic(exposing);
    Frame frame{.type = format,
                .width = array.width,
                .height = int32_t(array.height),
                .pitch = array.width * (format == FrameType::Raw8 ? 1 : 2),
                .pixels = {}};
    frame.pixels.resize(int(frame.pitch * array.height));
    if (format == FrameType::Ycbcr)
        codeYcbcr(exposing, mosaic, frame);
    else if (format == FrameType::Raw12)
        qToLittleEndian<quint16>(mosaic.data(), qsizetype(mosaic.size()), frame.pixels.data());
    else
        std::transform(mosaic.begin(), mosaic.end(), frame.pixels.begin(), [](uint16_t sample) {
            constexpr int kDivisor = int(kCountsPerByte);
            return char(uint8_t(std::min((sample + kDivisor / 2) / kDivisor, 255)));
        });
    // The line buffers hold whatever was there; 12-bit samples keep their upper four bits clear even so.
    uint64_t const oddMask = format == FrameType::Raw12 ? 0x0F : 0xFF;
    for (int i = 0; i < int(exposing.readOut.unusableRows * frame.pitch); ++i)
        frame.pixels[i] = char(mixed(exposing.noiseStream + uint64_t(i)) & (i % 2 == 1 ? oddMask : 0xFF));
    return frame;
}
} // namespace simulator
