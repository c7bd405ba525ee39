#pragma once

#include "calibration/calibration_flow.h"
#include "published/entries.h"

class Config;

namespace kestra {
/// The one instance.
[[nodiscard]] KestraMfr& kestraMfr();

/// What the calibration pages ask of the configuration page. The instance is looked at in each call: without
/// such a page no number is missing and none is stored.
[[nodiscard]] SerialNumber serialNumberOfConfigPage();

/// Makes the configuration page, for a dialog that shows one; this build's does not. It becomes
/// `g_configPage`, until someone deletes it, and its edits reset the file step of the calibration pages. Its
/// parent is the host's widget; the caller puts it into a tab and then lets it initialise.
Config* makeConfigPage(SensorRecord const& sensor, HostServices const& services);
} // namespace kestra
