#include "calibration/library_input.h"

#include "common/libraries.h"

namespace {

constexpr uint32_t kChromaZero = 128;
constexpr uint32_t kFullRangeHigh = 255;
constexpr uint32_t kVideoRangeChromaHigh = 224;

} // namespace

BayerCoding readBayerCoding(Host const& host) {
    auto const xOffset = uint32_t(host.readState("X Offset"));
    auto const yOffset = uint32_t(host.readState("Y Offset"));
    return {xOffset + 2 * yOffset, uint32_t(host.readState("Sensor Orientation"))};
}

sf_YcbcrInput readYcbcrInput(Host const& host, std::optional<uint32_t> knownOrientation) {
    sf_YcbcrInput input{};
    input.size = sizeof input;
    input.srgbStandard = uint32_t(host.readState("sRGB Color Standard"));
    for (uint32_t i = 0; i < 4; ++i)
        input.componentOrder[i] = i;
    bool const autoRange = host.readState("Auto Luma Range") != 0;
    input.lumaLow = uint32_t(host.readState(autoRange ? "Luma Clip Lo" : "Luma Lo"));
    // The high end is the clip level in both cases: the host has no separate variable for a fixed range.
    input.lumaHigh = uint32_t(host.readState("Luma Clip Hi"));
    input.chromaHigh = input.lumaHigh == kFullRangeHigh ? kFullRangeHigh : kVideoRangeChromaHigh;
    input.chromaZero = kChromaZero;
    input.orientation = knownOrientation ? *knownOrientation : uint32_t(host.readState("Sensor Orientation"));
    return input;
}

sf_SolutionParams makeSolutionParams(int32_t falloffPercent, int32_t radius) {
    sf_SolutionParams params{};
    params.size = sizeof params;
    params.falloffPercent = uint32_t(falloffPercent);
    params.parameter12 = 24;
    params.parameter16 = 1;
    params.parameter20 = 400;
    params.parameter24 = 300;
    params.parameter40 = 1.0;
    params.radius = uint32_t(radius);
    return params;
}

sf_ApgaParams makeApgaParams(int32_t falloffPercent, int32_t radius) {
    sf_ApgaParams params{};
    params.size = sizeof params;
    params.falloffPercent = uint32_t(falloffPercent);
    params.parameter28 = 400;
    params.parameter32 = 300;
    params.radius = uint32_t(radius);
    return params;
}

int handOverBayer(ShadingHandle const& handle, LibraryImage const& image, BayerCoding const& coding) {
    return shadefit().sf_SetInputImage2(handle.get(), image.data, image.width, image.height, image.bits,
                                        coding.phase, coding.orientation, 0, -1, -1);
}

int handOverYcbcr(ShadingHandle const& handle, LibraryImage const& image, sf_YcbcrInput const& coding) {
    return shadefit().sf_SetInputImageYcbcr(handle.get(), image.data, image.width, image.height, &coding, -1,
                                            -1);
}

int handOver(Host const& host, ShadingHandle const& handle, LibraryImage const& image) {
    return image.isYcbcr ? handOverYcbcr(handle, image, readYcbcrInput(host))
                         : handOverBayer(handle, image, readBayerCoding(host));
}
