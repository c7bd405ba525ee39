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

// What a row's loop needs, in the converter's counts.
struct RowConstants {
    float scale = 0; // counts per light
    float pedestal = 0;
    float shotVariance = 0; // for each count of signal
    float readVariance = 0;
};

float quantised(float counts) { return float(int(std::min(std::max(counts, 0.0F), kWhite) + 0.5F)); }

void convertRow(RowConstants const& row, float const* light, float const* noise, float* samples,
                size_t width) {
    for (size_t x = 0; x < width; ++x) {
        float const signal = light[x] * row.scale;
        float const deviation = std::sqrt(signal * row.shotVariance + row.readVariance);
        samples[x] = quantised(signal + deviation * noise[x] + row.pedestal);
    }
}

void correctRow(RowConstants const& row, float const* gains, float* samples, size_t width) {
    for (size_t x = 0; x < width; ++x)
        samples[x] = quantised((samples[x] - row.pedestal) * gains[x] + row.pedestal);
}

void deliverRow(std::vector<float> const& samples, bool mirrored, uint16_t* delivered) {
    auto const word = [](float sample) { return uint16_t(int(sample)); };
    if (mirrored)
        std::transform(samples.rbegin(), samples.rend(), delivered, word);
    else
        std::transform(samples.begin(), samples.end(), delivered, word);
}

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
    for (size_t i = 0; i < kTableSize; ++i)
        table[i] = float(exact[i] * scale);
    return table;
}

/// Fills normally distributed values of variance 1 that are a function of `stream` alone.
void fillGaussian(uint64_t stream, std::span<float> values) {
    static std::array<float, kTableSize> const table = quantiles();
    uint64_t counter = mixed(stream);
    size_t i = 0;
    while (i < values.size()) {
        uint64_t bits = mixed(counter++);
        for (size_t draw = 0; draw < kDrawsPerWord && i < values.size(); ++draw, bits >>= kTableBits)
            values[i++] = table[bits & (kTableSize - 1)];
    }
}
// Converts the array's rows one by one; the same row of the same exposure is always the same.
class RowConverter {
public:
    RowConverter(SensorArray const& array, ReadOut const& readOut, Exposing const& exposing)
        : m_exposing(exposing),
          m_constants{
              .scale = float(exposing.countsPerLight),
              .pedestal = float(readOut.pedestal),
              .shotVariance = float(1 / readOut.electronsPerCount),
              .readVariance = float(std::pow(readOut.readNoise / readOut.electronsPerCount, 2)),
          },
          m_noise(array.width) {}

    [[nodiscard]] RowConstants const& constants() const { return m_constants; }

    void convert(uint32_t y, std::vector<float>& samples) {
        fillGaussian(mixed(m_exposing.noiseStream) + y, m_noise);
        convertRow(m_constants, &m_exposing.light[size_t(y) * samples.size()], m_noise.data(), samples.data(),
                   samples.size());
    }

private:
    Exposing const& m_exposing;
    RowConstants m_constants;
    std::vector<float> m_noise;
};

// ITU-R BT.601: luma weights of red and blue; green has the rest.
constexpr float kRedWeight = 0.299F;
constexpr float kBlueWeight = 0.114F;
constexpr float kGreenWeight = 1 - kRedWeight - kBlueWeight;
constexpr float kChromaZero = 128;

struct Coding {
    float black = 0;
    float scale = 0; // counts to 0..1
    float lumaLow = 0;
    float lumaSpan = 0;
    float chromaSpan = 0;
};

char rounded(float value) { return char(uint8_t(std::clamp(value, 0.0F, 255.0F) + 0.5F)); }

// The four samples of a 2 x 2 cell, in the order of its rows, make one colour; which is which follows from
// the delivered phase. Chroma and luma are then those of the cell: no detail is invented.
std::array<char, 4> codedCell(std::array<float, 4> const& samples, uint32_t phase, Coding const& coding) {
    auto const level = [&](uint32_t sample) {
        return std::clamp((samples[sample] - coding.black) * coding.scale, 0.0F, 1.0F);
    };
    float const red = level(phase);
    float const blue = level(phase ^ 3);
    float const green = (level(phase ^ 1) + level(phase ^ 2)) / 2;
    float const luma = kRedWeight * red + kGreenWeight * green + kBlueWeight * blue;
    float const blueDifference = (blue - luma) / (2 * (1 - kBlueWeight));
    float const redDifference = (red - luma) / (2 * (1 - kRedWeight));
    char const y = rounded(coding.lumaLow + coding.lumaSpan * luma);
    return {y, rounded(kChromaZero + coding.chromaSpan * blueDifference), y,
            rounded(kChromaZero + coding.chromaSpan * redDifference)};
}

void codeYcbcr(SensorArray const& array, ReadOut const& readOut, Mosaic const& mosaic, Frame& frame) {
    Coding const coding{.black = float(readOut.pedestal),
                        .scale = float(1 / (kConverterWhite - readOut.pedestal)),
                        .lumaLow = float(readOut.lumaLow),
                        .lumaSpan = float(readOut.lumaHigh - readOut.lumaLow),
                        .chromaSpan = float(readOut.chromaSpan)};
    char* const pixels = frame.pixels.data();
    uint32_t const phase = array.deliveredPhase();
    for (uint32_t y = 0; y + 1 < array.height; y += 2) {
        uint16_t const* const upper = &mosaic[size_t(y) * array.width];
        uint16_t const* const lower = upper + array.width;
        char* const line = pixels + size_t(y) * frame.pitch;
        for (uint32_t x = 0; x + 1 < array.width; x += 2) {
            std::array<float, 4> const samples = {float(upper[x]), float(upper[x + 1]), float(lower[x]),
                                                  float(lower[x + 1])};
            std::array<char, 4> const cell = codedCell(samples, phase, coding);
            std::copy(cell.begin(), cell.end(), line + size_t(x) * 2);
        }
        std::copy(line, line + frame.pitch, line + frame.pitch);
    }
}
} // namespace

std::optional<double> centreRedToBlue(SensorArray const& array, ReadOut const& readOut,
                                      Exposing const& exposing) {
    constexpr uint32_t kShare = 8; // of the width and of the height
    uint32_t const left = array.width * (kShare - 1) / (2 * kShare) & ~1U;
    uint32_t const top = array.height * (kShare - 1) / (2 * kShare) & ~1U;
    RowConverter rows(array, readOut, exposing);
    // The row of a cell that holds red, and the one that holds blue.
    std::vector<float> reds(array.width);
    std::vector<float> blues(array.width);
    uint32_t const redRow = array.bayerPhase >> 1;
    uint32_t const redColumn = array.bayerPhase & 1;
    double red = 0, blue = 0, cells = 0, usable = 0;
    for (uint32_t y = top; y < top + array.height / kShare; y += 2) {
        rows.convert(y + redRow, reds);
        rows.convert(y + (redRow ^ 1), blues);
        for (uint32_t x = left; x < left + array.width / kShare; x += 2, ++cells) {
            float const r = reds[x + redColumn], b = blues[x + (redColumn ^ 1)];
            if (std::max(r, b) >= kWhite)
                continue;
            ++usable;
            red += double(r - rows.constants().pedestal);
            blue += double(b - rows.constants().pedestal);
        }
    }
    constexpr double kUsableShare = 0.95; // with fewer cells left, the noise would choose them
    constexpr double kLeastSignal = 0.5;  // counts
    if (usable < kUsableShare * cells || std::min(red, blue) < kLeastSignal * usable)
        return std::nullopt;
    return red / blue;
}

Mosaic exposeMosaic(SensorArray const& array, ReadOut const& readOut, Exposing const& exposing) {
    RowConverter rows(array, readOut, exposing);
    Mosaic mosaic(array.pixels());
    std::vector<float> samples(array.width);
    for (uint32_t row = 0; row < array.height; ++row) {
        uint32_t const y = array.arrayRow(row);
        rows.convert(y, samples);
        if (exposing.gains)
            correctRow(rows.constants(), &(*exposing.gains)[size_t(y) * array.width], samples.data(),
                       array.width);
        deliverRow(samples, array.isMirrored(), &mosaic[size_t(row) * array.width]);
    }
    return mosaic;
}

std::vector<float> exposeIdeal(SensorArray const& array, ReadOut const& readOut, Exposing const& exposing) {
    auto const scale = float(exposing.countsPerLight / (kConverterWhite - readOut.pedestal));
    std::vector<float> ideal(array.pixels());
    for (uint32_t row = 0; row < array.height; ++row) {
        size_t const from = size_t(array.arrayRow(row)) * array.width;
        size_t const to = size_t(row) * array.width;
        for (size_t x = 0; x < array.width; ++x) {
            float const signal = std::min(exposing.light[from + x] * scale, 1.0F);
            float const corrected = exposing.gains ? signal * (*exposing.gains)[from + x] : signal;
            ideal[to + (array.isMirrored() ? array.width - 1 - x : x)] = std::clamp(corrected, 0.0F, 1.0F);
        }
    }
    return ideal;
}

Frame deliveredFrame(SensorArray const& array, ReadOut const& readOut, Mosaic const& mosaic) {
    uint32_t const bytesPerPixel = readOut.format == FrameType::Raw8 ? 1 : 2;
    Frame frame{.type = readOut.format,
                .width = array.width,
                .height = int32_t(array.height),
                .pitch = array.width * bytesPerPixel,
                .pixels = {}};
    frame.pixels.resize(int(frame.pitch * array.height));
    if (readOut.format == FrameType::Ycbcr) {
        codeYcbcr(array, readOut, mosaic, frame);
    } else if (readOut.format == FrameType::Raw12) {
        qToLittleEndian<quint16>(mosaic.data(), qsizetype(mosaic.size()), frame.pixels.data());
    } else {
        constexpr int kDivisor = int(kCountsPerByte);
        std::transform(mosaic.begin(), mosaic.end(), frame.pixels.begin(), [](uint16_t sample) {
            return char(uint8_t(std::min((sample + kDivisor / 2) / kDivisor, 255)));
        });
    }
    return frame;
}

void spoilUnusableRows(Frame& frame, uint32_t rows, uint64_t noiseStream) {
    // 12-bit samples keep their upper four bits clear even here.
    char const oddMask = frame.type == FrameType::Raw12 ? 0x0F : char(0xFF);
    int const bytes = int(std::min<uint32_t>(rows, uint32_t(frame.height)) * frame.pitch);
    for (int i = 0; i < bytes; ++i) {
        auto const bits = char(uint8_t(mixed(noiseStream + uint64_t(i))));
        frame.pixels[i] = i % 2 == 1 ? char(bits & oddMask) : bits;
    }
}
} // namespace simulator
