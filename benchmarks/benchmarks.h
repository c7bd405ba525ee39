#pragma once

#include <array>
#include <cstdint>

/// Frames that cameras deliver, from a small preview to the largest sensor.
struct FrameSize {
    int32_t width;
    int32_t height;
};
inline constexpr std::array<FrameSize, 4> kFrameSizes{{{640, 480}, {1920, 1080}, {4096, 3072}, {8000, 6000}}};

/// Each tells the benchmark library what there is to measure. A benchmark's name is its subject, followed by
/// the way in which it is done; its arguments are a size.
void registerPictureBenchmarks();
void registerDialogBenchmarks();
void registerSolverBenchmarks();

/// Seconds until the process's first dialog stands painted, the loading of the libraries included.
[[nodiscard]] double measureFirstOpening();
