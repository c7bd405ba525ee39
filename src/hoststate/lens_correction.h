#pragma once

#include "common/host.h"
#include "common/sensor.h"
#include "common/sensor_kinds.h"

/// The switch of a sensor kind. The library is asked whether the sensor is a system-on-chip only for the
/// kinds whose switch depends on it.
[[nodiscard]] LensCorrection chooseLensCorrection(PageKind page, SensorKind const& kind,
                                                  Sensor const& sensor);

/// Switches the correction; leaves a sensor that lacks the bitfield untouched.
void setLensCorrection(Host const& host, Sensor const& sensor, LensCorrection const& correction,
                       bool enabled);

/// Whether the correction is on; false for a sensor that lacks the bitfield.
[[nodiscard]] bool lensCorrectionEnabled(Host const& host, Sensor const& sensor,
                                         LensCorrection const& correction);
