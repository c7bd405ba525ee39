#pragma once

#include "simulator/host/report/certificate.h"

#include <optional>

namespace shading {
/// The luminance that the dialog lets the corners keep until somebody chooses, percent of the centre's, and
/// what can be chosen there.
inline constexpr int kUsualFalloff = 95, kLeastFalloff = 50, kMostFalloff = 125;

struct SolveRequest {
    QString table;  ///< a file of the format shading-gains-1
    QString sensor; ///< a profile's name or file
    QString output; ///< the results file
    int falloffPercent = kUsualFalloff;
    std::optional<double> kelvin = {}; ///< of the one lamp; none: the table's middle one
};

/// Lets the calibration library solve the flat field that a simulated sensor shows behind a table's lens,
/// under one lamp or, for a sensor with three tables, under three; writes the results file that the dialog
/// saves. Tells the registers, what they leave, and what each falloff costs. Empty with the cause, and
/// nothing written, otherwise; where the library did not solve, `exitCode` changes.
[[nodiscard]] std::optional<pictara::Certificate> solveTable(SolveRequest const& request, int* exitCode,
                                                             QString* error);
} // namespace shading
