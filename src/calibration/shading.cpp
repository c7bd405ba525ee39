#include "calibration/shading.h"

#include "common/libraries.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace kestra {
namespace {
constexpr uint32_t kChromaZero = 128;
constexpr uint32_t kFullRangeHigh = 255;
constexpr uint32_t kVideoRangeChromaHigh = 224;
constexpr int kFailed = -1;
} // namespace

std::shared_ptr<void const> gaplessPixels(Frame const& frame) {
    int64_t const rowBytes = int64_t{frame.width} * frame.bytesPerPixel();
    if (!frame.data || frame.width <= 0 || frame.height <= 0)
        return nullptr;
    if (frame.pitch == 0 || frame.pitch == rowBytes)
        return {std::shared_ptr<void>(), frame.data};
    if (!frame.isConsistent(frame.bytesPerPixel()))
        return nullptr;
    try {
        auto const copy = std::make_shared<std::vector<uint8_t>>(size_t(rowBytes * frame.height));
        for (int64_t y = 0; y < frame.height; ++y)
            std::copy_n(frame.row(y), rowBytes, copy->begin() + ptrdiff_t(y * rowBytes));
        return {copy, copy->data()};
    } catch (std::exception const&) { // no memory, or more than a vector holds
        return nullptr;
    }
}

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

void Shading::take(sf_Handle* handle) {
    if (handle)
        m_handle = {handle, [](sf_Handle* last) { shadefit().sf_Destroy(last); }};
}

void Shading::giveUp() {
    // Moved out first: the library may spin events while it destroys the calibration.
    std::exchange(m_handle, nullptr).reset();
}

bool Shading::accepts(LibraryImage const& image, BayerCoding const& coding) const {
    auto const handle = m_handle;
    return handle &&
           shadefit().sf_SetInputImage2(handle.get(), image.data, image.width, image.height, image.bits,
                                        coding.phase, coding.orientation, 0, -1, -1) != 0;
}

bool Shading::accepts(LibraryImage const& image, sf_YcbcrInput const& coding) const {
    auto const handle = m_handle;
    return handle && shadefit().sf_SetInputImageYcbcr(handle.get(), image.data, image.width, image.height,
                                                      &coding, -1, -1) != 0;
}

int Shading::findSolution(sf_SolutionParams const& params) const {
    auto const handle = m_handle;
    return handle ? shadefit().sf_FindSolution(handle.get(), &params) : kFailed;
}

int Shading::findApga(sf_ApgaParams const& params) const {
    auto const handle = m_handle;
    return handle ? shadefit().sf_FindApga(handle.get(), &params) : kFailed;
}

int Shading::findAutoPga(sf_ApgaParams const& params) const {
    auto const handle = m_handle;
    return handle ? shadefit().sf_FindAutoPga(handle.get(), &params) : kFailed;
}

std::optional<std::vector<sf_RegEntry>> Shading::registers() const {
    auto const handle = m_handle;
    sf_RegList const* const list = handle ? shadefit().sf_DumpRegList(handle.get()) : nullptr;
    if (!list || (list->count > 0 && !list->entries))
        return std::nullopt;
    if (list->count <= 0)
        return std::vector<sf_RegEntry>{};
    return std::vector<sf_RegEntry>(list->entries, list->entries + list->count);
}

bool Shading::save(QByteArray const& path, uint32_t format) const {
    auto const handle = m_handle;
    return handle && shadefit().sf_DumpRegFile(handle.get(), path.constData(), format, 0, 0) == 0;
}
} // namespace kestra
