#pragma once

#include <QString>
#include <cstdint>

namespace solver {
/// Name of the file that holds the layout of a sensor: `layouts/<kind>-<variant>.layout` beside the library
/// that this code is linked into. Empty when the system does not tell where that library lies.
[[nodiscard]] QString layoutFileName(uint32_t sensorKind, uint32_t variant);
} // namespace solver
