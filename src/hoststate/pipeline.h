#pragma once

#include "common/host.h"
#include "common/sensor.h"
#include "common/sensor_kinds.h"

#include <QByteArray>
#include <span>

namespace kestra {
// Variables of the colour pipeline that are read or set apart from the lists of its two states, too.
inline constexpr char kAutoExposure[] = "Auto Exposure";
inline constexpr char kWhiteBalance[] = "White Balance";
inline constexpr char kRelativeRedGain[] = "Relative Red Gain";   // thousandths
inline constexpr char kRelativeBlueGain[] = "Relative Blue Gain"; // thousandths

/// Puts the host's colour pipeline into the raw state used for measuring, with the automatic exposure on or
/// off, and switches the sensor's lens correction off. Optionally sets both relative colour gains to unity.
void setRawPipeline(Host const& host, Sensor const& sensor, LensCorrection const& correction,
                    bool autoExposure, bool resetWhiteBalanceGains);

/// Puts the host's colour pipeline into the processed view in which a finished calibration is verified,
/// applies the preset "Lens Calibration Verify" and switches the sensor's lens correction on.
void setVerifyPipeline(Host const& host, Sensor const& sensor, LensCorrection const& correction);

/// A preset of the host's ini file under the names that it may bear, in the order in which they are tried:
/// the host marks presets that its menus hide, or that its toolbar shows, with a prefix.
using PresetNames = std::span<char const* const>;

inline constexpr char const* kSetupPreset[] = {
    "Lens Calibration Setup",
    "Hidden: Lens Calibration Setup",
    "Toolbar: Lens Calibration Setup",
};
inline constexpr char const* kVerifyPreset[] = {
    "Lens Calibration Verify",
    "Hidden: Lens Calibration Verify",
};

/// Whether the host's ini file holds a section of exactly that name; asks the host for the file anew each
/// time.
[[nodiscard]] bool presetExists(Host const& host, char const* name);

/// The first of the names that exists, or null.
[[nodiscard]] char const* findPreset(Host const& host, PresetNames names);

/// Lets the host apply the first of the names that exists; false when there is none.
[[nodiscard]] bool applyPreset(Host const& host, PresetNames names);

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
} // namespace kestra
