#pragma once

#include "benchmarks/medians.h"

#include <string>

/// What a run has shown, held against what the plug-in promises.
struct Report {
    std::string text;       ///< Markdown, with a verdict on each figure
    bool hasMissed = false; ///< a figure misses its target, or was not measured
};

/// `command` is the line that the reader can repeat; `firstOpening` is in seconds.
[[nodiscard]] Report makeReport(Medians const& medians, double firstOpening, std::string const& command);
