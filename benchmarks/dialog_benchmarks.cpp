#include "benchmarks/benchmarks.h"
#include "benchmarks/dialog_scene.h"

#include <QApplication>
#include <QEvent>
#include <benchmark/benchmark.h>
#include <chrono>

namespace {
// Counts every widget that paints itself while it lives.
class PaintCount : public QObject {
public:
    PaintCount() { qApp->installEventFilter(this); }
    [[nodiscard]] int count() const { return m_count; }
    bool eventFilter(QObject*, QEvent* event) override {
        m_count += event->type() == QEvent::Paint;
        return false;
    }

private:
    int m_count = 0;
};

void idleFrame(benchmark::State& state) {
    DialogScene scene;
    scene.open();
    for (auto _ : state)
        scene.frame();
}

int paintsOfTicks(DialogScene& scene) {
    PaintCount const paints;
    for (int i = 0; i < 100; ++i) {
        scene.tick();
        QApplication::processEvents();
    }
    return paints.count();
}

void ticks(benchmark::State& state, bool whileCalibrating) {
    DialogScene scene;
    scene.open();
    if (whileCalibrating)
        scene.startCalibration();
    scene.tick(); // shows what the start has changed
    QApplication::processEvents();
    state.counters["repaints"] = paintsOfTicks(scene);
    for (auto _ : state)
        scene.tick();
}

double secondsToOpen(DialogScene& scene) {
    auto const start = std::chrono::steady_clock::now();
    scene.open();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void openDialog(benchmark::State& state) {
    DialogScene scene;
    for (auto _ : state) {
        state.SetIterationTime(secondsToOpen(scene));
        scene.close();
    }
}
} // namespace

void registerDialogBenchmarks() {
    benchmark::RegisterBenchmark("frame with nothing to do", idleFrame);
    benchmark::RegisterBenchmark("tick with nothing to do",
                                 [](benchmark::State& state) { ticks(state, false); });
    benchmark::RegisterBenchmark("tick of a step that waits",
                                 [](benchmark::State& state) { ticks(state, true); });
    benchmark::RegisterBenchmark("opening the dialog", openDialog)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

double measureFirstOpening() {
    DialogScene scene;
    return secondsToOpen(scene);
}
