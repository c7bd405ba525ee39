#include "simulator/camera/read_out.h"
#include "simulator/camera/noise.h"

#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <cstddef>

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

float quantised(float counts) {
    return float(int(std::min(std::max(counts, 0.0F), kWhite) + 0.5F));
}

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

} // namespace

Mosaic exposeMosaic(SensorArray const& array, ReadOut const& readOut, Exposing const& exposing) {
    RowConstants const constants{
        .scale = float(exposing.countsPerLight),
        .pedestal = float(readOut.pedestal),
        .shotVariance = float(1 / readOut.electronsPerCount),
        .readVariance = float(std::pow(readOut.readNoise / readOut.electronsPerCount, 2)),
    };
    Mosaic mosaic(array.pixels());
    std::vector<float> noise(array.width);
    std::vector<float> samples(array.width);
    for (uint32_t row = 0; row < array.height; ++row) {
        uint32_t const y = array.arrayRow(row);
        size_t const start = size_t(y) * array.width;
        fillGaussian(mixed(exposing.noiseStream) + y, noise);
        convertRow(constants, &exposing.light[start], noise.data(), samples.data(), array.width);
        if (exposing.gains)
            correctRow(constants, &(*exposing.gains)[start], samples.data(), array.width);
        deliverRow(samples, array.isMirrored(), &mosaic[size_t(row) * array.width]);
    }
    return mosaic;
}

Frame rawFrame(SensorArray const& array, ReadOut const& readOut, Mosaic const& mosaic) {
    bool const wide = readOut.format == OutputFormat::Raw12;
    Frame frame{.type = wide ? FrameType::Raw12 : FrameType::Raw8,
                .width = array.width,
                .height = int32_t(array.height),
                .pitch = array.width * (wide ? 2 : 1),
                .pixels = {}};
    frame.pixels.resize(int(frame.pitch * array.height));
    if (wide) {
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
