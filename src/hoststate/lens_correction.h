#pragma once

#include "common/host.h"
#include "common/sensor.h"

/// The two calibration pages know slightly different sensors' lens-correction switches.
enum class PageKind { LensShading, Apga };

/// The register, or bitfield of a register, that switches a sensor's own lens-shading correction. The names
/// are literals that live as long as the plug-in; an empty bitfield name means the whole register.
struct LensCorrection {
    char const* lensCorrectionRegister = "";
    char const* lensCorrectionBitfield = "";
};

/// The switch of a sensor kind. The library is asked whether the sensor is a system-on-chip only for the
/// kinds whose switch depends on it.
[[nodiscard]] LensCorrection chooseLensCorrection(PageKind page, uint32_t sensorKind, Sensor const& sensor);

/// Switches the correction; leaves a sensor that lacks the bitfield untouched.
void setLensCorrection(Host const& host, Sensor const& sensor, LensCorrection const& correction,
                       bool enabled);

/// Whether the correction is on; false for a sensor that lacks the bitfield.
[[nodiscard]] bool lensCorrectionEnabled(Host const& host, Sensor const& sensor,
                                         LensCorrection const& correction);
