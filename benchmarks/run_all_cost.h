#pragma once

#include <optional>

/// Processor seconds of a full calibration that `pictara-sim` runs without a window on the default camera,
/// from its start to its report: the median of several runs. None when one fails.
[[nodiscard]] std::optional<double> measureRunAll();
