#include "benchmarks/benchmarks.h"
#include "tests/support/solver_input.h"

#include <benchmark/benchmark.h>
#include <map>

namespace {
QByteArray const& exposedFrame(TestSensor const& sensor) {
    static std::map<int, QByteArray> frames;
    QByteArray& frame = frames[sensor.width];
    if (frame.isEmpty())
        frame = expose(sensor, SyntheticLens().response(sensor));
    return frame;
}

// What one calibration asks of the library.
void solve(benchmark::State& state) {
    TestSensor sensor;
    sensor.width = int(state.range(0));
    sensor.height = int(state.range(1));
    QByteArray const& frame = exposedFrame(sensor);
    for (auto _ : state) {
        Handle const handle = open(sensor);
        if (!setImage(handle, sensor, frame) || findSolution(handle) != 0 || registers(handle).empty())
            state.SkipWithError("the library found no solution");
    }
    state.SetComplexityN(state.range(0) * state.range(1));
}
} // namespace

void registerSolverBenchmarks() {
    benchmark::RegisterBenchmark("solver", solve)
        ->Args({800, 600})
        ->Args({1632, 1224})
        ->Args({4000, 3000})
        ->Unit(benchmark::kMillisecond);
}
