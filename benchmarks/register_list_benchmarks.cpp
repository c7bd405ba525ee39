#include "benchmarks/benchmarks.h"
#include "calibration/solver_input.h"

#include <benchmark/benchmark.h>

using namespace kestra;

namespace {

uint64_t g_written = 0;

void loadRegisterList(benchmark::State& state) {
    HostServices services{};
    services.writeListEntry = [](uint32_t, uint32_t, uint32_t, uint32_t, uint32_t value) {
        g_written += value;
    };
    Host const host(services);
    bool isCalibrating = true;
    std::vector<sf_RegEntry> const entries(size_t(state.range(0)), {0, 0x3600, 1});
    for (auto _ : state) {
        if (!writeRegisterList(host, entries, [&] { return isCalibrating; }))
            state.SkipWithError("the list was not written");
        benchmark::DoNotOptimize(g_written);
        benchmark::DoNotOptimize(isCalibrating);
    }
    state.SetComplexityN(state.range(0));
}

} // namespace

void registerRegisterListBenchmarks() {
    benchmark::RegisterBenchmark("loading a register list", loadRegisterList)
        ->RangeMultiplier(4)
        ->Range(64, 16384);
}
