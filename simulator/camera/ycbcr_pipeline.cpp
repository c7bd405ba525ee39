#include "simulator/camera/ycbcr_pipeline.h"

#include <algorithm>
#include <array>

namespace simulator {
namespace {
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
} // namespace

Frame ycbcrFrame(SensorArray const& array, ReadOut const& readOut, Mosaic const& mosaic) {
    Coding const coding{.black = float(readOut.pedestal),
                        .scale = float(1 / (kConverterWhite - readOut.pedestal)),
                        .lumaLow = float(readOut.lumaLow),
                        .lumaSpan = float(readOut.lumaHigh - readOut.lumaLow),
                        .chromaSpan = float(readOut.chromaSpan)};
    Frame frame{.type = FrameType::Ycbcr,
                .width = array.width,
                .height = int32_t(array.height),
                .pitch = array.width * 2,
                .pixels = {}};
    frame.pixels.resize(int(frame.pitch * array.height));
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
    return frame;
}
} // namespace simulator
