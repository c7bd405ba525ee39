#pragma once

#include <optional>

/// What a full calibration costs that `pictara-sim` runs without a window, in seconds.
struct RunAllCost {
    double processor = 0; ///< of the whole program, from its start to its report
    double ticks = 0;     ///< the processor's part in the page's ticks
    double pauses = 0;    ///< by the clock, in ticks, while the EEPROM stores what was written
};

/// The median of several runs by their processor time, on the default camera; none when one fails.
[[nodiscard]] std::optional<RunAllCost> measureRunAll();
