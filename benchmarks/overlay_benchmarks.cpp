#include "benchmarks/benchmarks.h"
#include "benchmarks/noise_picture.h"
#include "pictures/uniformity.h"

#include <QRect>
#include <benchmark/benchmark.h>

using namespace kestra;

namespace {
constexpr uint32_t kColour = 0xDD2200;

// The same ring in frames of any size.
void sameRing(benchmark::State& state) {
    NoisePicture picture = noisePicture({int32_t(state.range(0)), int32_t(state.range(1))});
    QRect const block(QPoint(100, 100), QPoint(160, 160));
    for (auto _ : state) {
        paintRing(picture.frame(), block, kColour);
        benchmark::ClobberMemory();
    }
}

// Rings of any size in the largest frame.
void sameFrame(benchmark::State& state) {
    NoisePicture picture = noisePicture(kFrameSizes.back());
    int const side = int(state.range(0));
    QRect const block(QPoint(100, 100), QPoint(100 + side, 100 + side));
    for (auto _ : state) {
        paintRing(picture.frame(), block, kColour);
        benchmark::ClobberMemory();
    }
    state.SetComplexityN(side);
}
} // namespace

void registerOverlayBenchmarks() {
    auto* const frames = benchmark::RegisterBenchmark("overlay of one block", sameRing);
    for (FrameSize const& size : kFrameSizes)
        frames->Args({size.width, size.height});
    benchmark::RegisterBenchmark("overlay by side of the ring", sameFrame)
        ->RangeMultiplier(2)
        ->Range(32, 512);
}
