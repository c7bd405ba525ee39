#include "benchmarks/benchmarks.h"
#include "benchmarks/noise_picture.h"
#include "benchmarks/opencv_means.h"
#include "benchmarks/plain_sum.h"
#include "pictures/block_statistics.h"
#include "pictures/white_balance.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <string>

using namespace kestra;

// Every way is measured on the same buffers. OpenCV's ways and the plain sum are what the plug-in is held
// against.

namespace {
FrameSize sizeOf(benchmark::State const& state) { return {int32_t(state.range(0)), int32_t(state.range(1))}; }

void countPixels(benchmark::State& state) {
    int64_t const pixels = state.range(0) * state.range(1);
    state.SetComplexityN(pixels);
    state.SetBytesProcessed(state.iterations() * pixels * 4);
}

// What is averaged of a picture: the blocks of its statistics, or its centre.
using ChooseBlocks = Blocks (*)(NoisePicture const&);

Blocks statisticsBlocks(NoisePicture const& picture) {
    CSbl statistics;
    FrameSize const size = picture.size;
    statistics.measure(picture.pixels.data(), size.width, size.height, size.width);
    Blocks blocks{{}, {statistics.columns(), statistics.rows()}};
    for (int row = 0; row < statistics.rows(); ++row) {
        for (int column = 0; column < statistics.columns(); ++column) {
            CSbl::Block const& block = statistics.block(row, column);
            blocks.rectangles.emplace_back(cv::Point(block.left, block.top),
                                           cv::Point(block.right, block.bottom));
        }
    }
    return blocks;
}

Blocks centre(NoisePicture const& picture) {
    auto const [width, height] = picture.size;
    return {{cv::Rect(cv::Point(width / 4, height / 4), cv::Point(3 * width / 4, 3 * height / 4))}, {1, 1}};
}

void blockStatistics(benchmark::State& state) {
    NoisePicture const& picture = noisePicture(sizeOf(state));
    FrameSize const size = picture.size;
    auto const statistics = std::make_unique<CSbl>();
    for (auto _ : state) {
        statistics->measure(picture.pixels.data(), size.width, size.height, size.width);
        benchmark::DoNotOptimize(statistics->maxDeviation());
    }
    countPixels(state);
}

void whiteBalance(benchmark::State& state) {
    Frame const frame = noisePicture(sizeOf(state)).frame();
    for (auto _ : state)
        benchmark::DoNotOptimize(meanOfCentre(frame));
    countPixels(state);
}

void sumWholePicture(benchmark::State& state) {
    NoisePicture const& picture = noisePicture(sizeOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(plainSum(picture.pixels.data(), picture.pixels.size()));
    countPixels(state);
}

void sumCentre(benchmark::State& state) {
    NoisePicture const& picture = noisePicture(sizeOf(state));
    cv::Rect const area = centre(picture).rectangles[0];
    for (auto _ : state) {
        uint64_t sum = 0;
        for (int y = area.y; y < area.y + area.height; ++y)
            sum += plainSum(picture.pixels.data() + ptrdiff_t{y} * picture.size.width + area.x,
                            size_t(area.width));
        benchmark::DoNotOptimize(sum);
    }
    countPixels(state);
}

struct OpencvWay {
    char const* name;
    void (OpencvMeans::*run)();
    double tolerance; // counts, of a block's mean
};
constexpr OpencvWay kOpencvWays[] = {
    {"cv::mean", &OpencvMeans::byMean, 1e-6},
    {"cv::resize", &OpencvMeans::byResize, 3},
    {"cv::integral", &OpencvMeans::byIntegral, 1e-6},
};

// A way that came to other means would be no comparison.
bool isSame(OpencvMeans const& means, NoisePicture const& picture, Blocks const& blocks, double tolerance) {
    for (size_t i = 0; i < blocks.rectangles.size(); ++i) {
        cv::Rect const& block = blocks.rectangles[i];
        double red = 0;
        for (int y = block.y; y < block.y + block.height; ++y)
            for (int x = block.x; x < block.x + block.width; ++x)
                red += (picture.pixels[size_t(y) * size_t(picture.size.width) + size_t(x)] >> 16) & 0xFF;
        if (std::abs(red / block.area() - means.means()[i][2]) > tolerance)
            return false;
    }
    return true;
}

void opencv(benchmark::State& state, ChooseBlocks choose, OpencvWay const& way) {
    NoisePicture const& picture = noisePicture(sizeOf(state));
    Blocks const blocks = choose(picture);
    auto* const pixels = const_cast<uint32_t*>(picture.pixels.data()); // cv::Mat knows no read-only buffer
    OpencvMeans means(cv::Mat(picture.size.height, picture.size.width, CV_8UC4, pixels), blocks);
    (means.*way.run)();
    if (!isSame(means, picture, blocks, way.tolerance))
        state.SkipWithError("OpenCV came to other means");
    for (auto _ : state) {
        (means.*way.run)();
        benchmark::DoNotOptimize(means.means().data());
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

template <typename Function>
benchmark::internal::Benchmark* atEverySize(std::string const& name, Function function) {
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), function);
    for (FrameSize const& size : kFrameSizes)
        registered->Args({size.width, size.height});
    return registered;
}

void registerOpencv(std::string const& subject, ChooseBlocks choose) {
    for (OpencvWay const& way : kOpencvWays)
        atEverySize(subject + " " + way.name,
                    [choose, &way](benchmark::State& state) { opencv(state, choose, way); });
}
} // namespace

void registerPictureBenchmarks() {
    cv::setNumThreads(1);
    atEverySize("block statistics plug-in", blockStatistics);
    atEverySize("block statistics plain sum", sumWholePicture);
    registerOpencv("block statistics", statisticsBlocks);
    atEverySize("white balance plug-in", whiteBalance);
    // Centres that all lie in the same cache: from one cache to the next the price of a pixel changes.
    benchmark::RegisterBenchmark("white balance by height", whiteBalance)
        ->Args({1920, 1080})
        ->Args({1920, 2160})
        ->Args({1920, 3240})
        ->Args({1920, 4320});
    atEverySize("white balance plain sum", sumCentre);
    registerOpencv("white balance", centre);
}
