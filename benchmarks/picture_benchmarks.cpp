#include "benchmarks/benchmarks.h"
#include "benchmarks/measurements.h"
#include "benchmarks/noise_picture.h"
#include "benchmarks/opencv_means.h"
#include "benchmarks/plain_reads.h"
#include "pictures/block_statistics.h"
#include "pictures/lab.h"
#include "pictures/uniformity.h"
#include "pictures/white_balance.h"

#include <QRect>
#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace kestra;

// OpenCV's ways and the plain reads are what the plug-in is held against, on the same pictures.

namespace {
FrameSize sizeOf(benchmark::State const& state) { return {int32_t(state.range(0)), int32_t(state.range(1))}; }

void countPixels(benchmark::State& state) {
    int64_t const pixels = state.range(0) * state.range(1);
    state.SetComplexityN(pixels);
    state.SetBytesProcessed(state.iterations() * pixels * 4);
}

// What is averaged of a picture: the blocks of its statistics, or its centre.
using ChooseBlocks = Blocks (*)(FrameSize);

Blocks statisticsBlocks(FrameSize size) {
    CSbl statistics;
    statistics.measure(NoisePictures(size).next(), size.width, size.height, size.width);
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

Blocks centre(FrameSize size) {
    auto const [width, height] = size;
    return {{cv::Rect(cv::Point(width / 4, height / 4), cv::Point(3 * width / 4, 3 * height / 4))}, {1, 1}};
}

void blockStatistics(benchmark::State& state) {
    NoisePictures pictures(sizeOf(state));
    FrameSize const size = pictures.size();
    auto const statistics = std::make_unique<CSbl>();
    for (auto _ : state) {
        statistics->measure(pictures.next(), size.width, size.height, size.width);
        benchmark::DoNotOptimize(statistics->maxDeviation());
    }
    countPixels(state);
}

void whiteBalance(benchmark::State& state) {
    NoisePictures pictures(sizeOf(state));
    auto const [width, height] = pictures.size();
    for (auto _ : state)
        benchmark::DoNotOptimize(meanOfCentre({pictures.next(), ImageType::Rgb32, width, height, width * 4}));
    countPixels(state);
}

double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

template <typename Work>
double secondsOf(Work work) {
    double const begin = processorSeconds();
    work();
    return processorSeconds() - begin;
}

// Reads what of a picture is averaged, and answers something of each word, so that none is left out.
uint64_t readAll(PlainRead const& way, uint32_t const* pixels, int width, cv::Rect const& area) {
    int const pieces = area.width == width ? 1 : area.height; // whole rows follow one another
    uint32_t const* const first = pixels + ptrdiff_t{area.y} * width + area.x;
    uint64_t sum = 0;
    for (int piece = 0; piece < pieces; ++piece)
        sum += way.sum(first + ptrdiff_t{piece} * width, size_t(area.area() / pieces));
    return sum;
}

// What no read contains: the mean colours of the blocks are converted.
void convertColours(CSbl const& statistics) {
    for (int row = 0; row < statistics.rows(); ++row)
        for (int column = 0; column < statistics.columns(); ++column) {
            CSbl::Block const& block = statistics.block(row, column);
            benchmark::DoNotOptimize(rgbToLab(block.red, block.green, block.blue));
        }
}

// The plug-in's way and the plain reads take turns picture by picture: what slows the machine's memory
// meanwhile slows them all. An iteration is some turns of each; the counters are medians, times in seconds of
// a picture.
template <typename PlugIn>
void takeTurns(benchmark::State& state, ChooseBlocks choose, PlugIn plugIn, CSbl const* coloursOf) {
    constexpr size_t kWays = 1 + std::size(kPlainReads);
    constexpr size_t kTurns = 4;
    NoisePictures pictures(sizeOf(state));
    cv::Rect area;
    for (cv::Rect const& block : choose(pictures.size()).rectangles)
        area |= block;
    std::map<std::string, std::vector<double>> samples;
    size_t first = 0;
    for (auto _ : state) {
        std::array<double, kWays> spent{};
        for (size_t turn = 0; turn < kTurns; ++turn, ++first)
            for (size_t i = 0; i < kWays; ++i) {
                size_t const way = (first + i) % kWays; // each follows each
                uint32_t const* const pixels = pictures.next();
                spent[way] += secondsOf([&] {
                    if (way == 0)
                        plugIn(pixels);
                    else
                        benchmark::DoNotOptimize(
                            readAll(kPlainReads[way - 1], pixels, pictures.size().width, area));
                });
            }
        for (double& seconds : spent)
            seconds /= kTurns;
        double const colours = coloursOf ? secondsOf([&] { convertColours(*coloursOf); }) : 0;
        samples["plug-in"].push_back(spent[0]);
        samples["colours"].push_back(colours);
        for (size_t way = 1; way < kWays; ++way) {
            std::string const name = kPlainReads[way - 1].name;
            samples[name].push_back(spent[way]);
            samples["of " + name].push_back(spent[way] / spent[0]);
            samples["of limit by " + name].push_back((spent[way] + colours) / spent[0]);
        }
    }
    for (auto const& [name, values] : samples)
        state.counters[name] = medianOf(values);
}

void statisticsInTurns(benchmark::State& state) {
    auto const [width, height] = sizeOf(state);
    auto const statistics = std::make_unique<CSbl>();
    auto const measure = [&, w = width, h = height](uint32_t const* pixels) {
        statistics->measure(pixels, w, h, w);
        benchmark::DoNotOptimize(statistics->maxDeviation());
    };
    takeTurns(state, statisticsBlocks, measure, statistics.get());
}

void whiteBalanceInTurns(benchmark::State& state) {
    auto const [width, height] = sizeOf(state);
    auto const measure = [w = width, h = height](uint32_t const* pixels) {
        benchmark::DoNotOptimize(meanOfCentre({pixels, ImageType::Rgb32, w, h, w * 4}));
    };
    takeTurns(state, centre, measure, nullptr);
}

struct OpencvWay {
    char const* name;
    void (OpencvMeans::*run)(cv::Mat const& picture);
    double tolerance; // counts, of a block's mean
};
constexpr OpencvWay kOpencvWays[] = {
    {"cv::mean", &OpencvMeans::byMean, 1e-6},
    {"cv::resize", &OpencvMeans::byResize, 3},
    {"cv::integral", &OpencvMeans::byIntegral, 1e-6},
};

// A way that came to other means would be no comparison.
bool isSame(OpencvMeans const& means, uint32_t const* pixels, int width, Blocks const& blocks,
            double tolerance) {
    for (size_t i = 0; i < blocks.rectangles.size(); ++i) {
        cv::Rect const& block = blocks.rectangles[i];
        double red = 0;
        for (int y = block.y; y < block.y + block.height; ++y)
            for (int x = block.x; x < block.x + block.width; ++x)
                red += (pixels[ptrdiff_t{y} * width + x] >> 16) & 0xFF;
        if (std::abs(red / block.area() - means.means()[i][2]) > tolerance)
            return false;
    }
    return true;
}

void opencv(benchmark::State& state, ChooseBlocks choose, OpencvWay const& way) {
    NoisePictures pictures(sizeOf(state));
    auto const [width, height] = pictures.size();
    Blocks const blocks = choose(pictures.size());
    OpencvMeans means(blocks);
    auto const run = [&, w = width, h = height](uint32_t const* pixels) {
        // cv::Mat knows no read-only buffer.
        (means.*way.run)(cv::Mat(h, w, CV_8UC4, const_cast<uint32_t*>(pixels)));
    };
    uint32_t const* const first = pictures.next();
    run(first);
    if (!isSame(means, first, width, blocks, way.tolerance))
        state.SkipWithError("OpenCV came to other means");
    for (auto _ : state) {
        run(pictures.next());
        benchmark::DoNotOptimize(means.means().data());
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

// Rings of any size in the largest frame: the overlay costs what its ring costs.
void overlay(benchmark::State& state) {
    auto const [width, height] = kFrameSizes.back();
    std::vector<uint32_t> pixels(size_t(width) * size_t(height));
    Frame const frame{pixels.data(), ImageType::Rgb32, width, height, width * 4};
    int const side = int(state.range(0));
    QRect const block(QPoint(100, 100), QPoint(100 + side, 100 + side));
    for (auto _ : state) {
        paintRing(frame, block, 0xDD2200);
        benchmark::ClobberMemory();
    }
    state.SetComplexityN(side);
}

template <typename Function>
void atEverySize(std::string const& name, Function function) {
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), function);
    for (FrameSize const& size : kFrameSizes)
        registered->Args({size.width, size.height});
}

void inTurns(std::string const& name, void (*function)(benchmark::State&)) {
    for (FrameSize const& size : kFrameSizes)
        benchmark::RegisterBenchmark(name.c_str(), function)
            ->Args({size.width, size.height})
            ->Iterations(std::max(8, 200'000'000 / (size.width * size.height)));
}

void registerOthers(std::string const& subject, ChooseBlocks choose) {
    for (OpencvWay const& way : kOpencvWays)
        atEverySize(subject + " " + way.name,
                    [choose, &way](benchmark::State& state) { opencv(state, choose, way); });
}
} // namespace

void registerPictureBenchmarks() {
    cv::setNumThreads(1);
    atEverySize("block statistics plug-in", blockStatistics);
    inTurns("block statistics in turns", statisticsInTurns);
    registerOthers("block statistics", statisticsBlocks);
    atEverySize("white balance plug-in", whiteBalance);
    inTurns("white balance in turns", whiteBalanceInTurns);
    registerOthers("white balance", centre);
    benchmark::RegisterBenchmark("overlay by side of the ring", overlay)->RangeMultiplier(2)->Range(32, 512);
}
