#pragma once

#include "benchmarks/eeprom_cost.h"
#include "benchmarks/measurements.h"
#include "benchmarks/run_all_cost.h"

#include <optional>
#include <string>
#include <vector>

/// All figures of one run.
struct Measured {
    Measurements benchmarks;
    double firstOpening = 0; ///< seconds
    std::optional<double> runAll;
    std::vector<EepromCost> eeprom;
};

/// What a run has shown, held against what the plug-in promises.
struct Report {
    std::string text;       ///< Markdown, with a verdict on each figure
    bool hasMissed = false; ///< a figure misses its target, or was not measured
};

/// `command` is the line that the reader can repeat.
[[nodiscard]] Report makeReport(Measured const& measured, std::string const& command);
