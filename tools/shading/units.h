#pragma once

#include "simulator/host/report/certificate.h"

#include <optional>

namespace shading {
struct UnitsRequest {
    QString folder; ///< of results files (.ini) and EEPROM images, one a unit; others are passed over
    QString sensor; ///< a profile's name or file, of all units
};

/// Tells the correction of each unit by its serial number, how it changes over the units, and which of them
/// fall out. Files that hold no correction of the sensor are told with the cause; where there are no others,
/// `exitCode` changes. Empty with the cause when there is no such folder or sensor.
[[nodiscard]] std::optional<pictara::Certificate> tellUnits(UnitsRequest const& request, int* exitCode,
                                                            QString* error);
} // namespace shading
