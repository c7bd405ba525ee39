#include "simulator/solver/sampling.h"

#include <algorithm>
#include <iterator>

namespace solver {
namespace {
FrameSampling oriented(uint32_t orientation) {
    FrameSampling sampling;
    sampling.mirrored = (orientation & 1) != 0;
    sampling.upsideDown = (orientation & 2) != 0;
    return sampling;
}
} // namespace

FrameSampling bayerSampling(SensorLayout const& layout, uint32_t bayerPhase, uint32_t orientation) {
    int const redColumn = static_cast<int>(bayerPhase & 1);
    int const redRow = static_cast<int>(bayerPhase >> 1 & 1);
    auto const component = [](int column, int row) { return ComponentSampling{column, 2, row, 2, 0}; };
    FrameSampling sampling = oriented(orientation);
    sampling.components.resize(kPlanes);
    sampling.components[kRed] = component(redColumn, redRow);
    sampling.components[kGreenRed] = component(1 - redColumn, redRow);
    sampling.components[kGreenBlue] = component(redColumn, 1 - redRow);
    sampling.components[kBlue] = component(1 - redColumn, 1 - redRow);
    sampling.twoByteSamples = layout.sampleBytes == 2;
    sampling.bytesPerPixel = sampling.twoByteSamples ? 2 : 1;
    return sampling;
}

FrameSampling rgb32Sampling(uint32_t orientation) {
    FrameSampling sampling = oriented(orientation);
    sampling.bytesPerPixel = 4;
    for (size_t const byte : {2, 1, 0})
        sampling.components.push_back({0, 1, 0, 1, byte});
    return sampling;
}

std::optional<FrameSampling> ycbcrSampling(sf_YcbcrInput const& input) {
    auto const& order = input.componentOrder;
    auto const byteOf = [&](uint32_t component) {
        return static_cast<size_t>(std::find(std::begin(order), std::end(order), component) -
                                   std::begin(order));
    };
    constexpr size_t kBytesPerPixel = 2;
    size_t const luma = byteOf(0);
    size_t const blue = byteOf(1);
    size_t const secondLuma = byteOf(2);
    size_t const red = byteOf(3);
    if (std::max({luma, blue, secondLuma, red}) >= std::size(order) || luma + kBytesPerPixel != secondLuma)
        return std::nullopt;
    FrameSampling sampling = oriented(input.orientation);
    sampling.bytesPerPixel = kBytesPerPixel;
    sampling.components.push_back({0, 1, 0, 1, luma});
    // Chroma comes once for two pixels; the byte within the pair tells which pixel's place it takes.
    for (size_t const byte : {blue, red})
        sampling.components.push_back(
            {static_cast<int>(byte / kBytesPerPixel), 2, 0, 1, byte % kBytesPerPixel});
    return sampling;
}
} // namespace solver
