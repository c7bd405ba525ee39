#pragma once

#include "simulator/host/run_report.h"

namespace pictara {

/// The report's figures as a JSON object; every key tells its unit.
[[nodiscard]] QByteArray summaryJson(RunReport const& report);

/// A number with as many decimals as anybody can mean.
[[nodiscard]] double rounded(double value);

} // namespace pictara
