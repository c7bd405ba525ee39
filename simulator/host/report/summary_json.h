#pragma once

#include "simulator/host/report/run_report.h"

namespace pictara {
/// The report's figures as a JSON object; every key tells its unit.
[[nodiscard]] QByteArray summaryJson(RunReport const& report);
} // namespace pictara
