#pragma once

#include "calibration/page_core.h"

#include <QByteArray>

namespace kestra {

/// The key under which the host keeps an integer setting of one sensor: "%1 for %2" of setting and sensor
/// name.
[[nodiscard]] QByteArray sensorSettingKey(char const* setting, char const* sensorName);

/// Allowed falloff in per cent of a falloff text, its last character (the sign) dropped; 0 when it is no
/// number.
[[nodiscard]] int32_t falloffPercent(QString const& text);
/// The same within the limits that the host and the settings store are given.
[[nodiscard]] int32_t clampedFalloffPercent(QString const& text);

/// Reads the page's settings from the host and shows them.
void loadSettings(PageCore& core);

/// Writes the page's settings to the host; takes the uniformity limit from its field. The radius is the
/// host's to set, so it is never written.
void storeSettings(PageCore& core);

} // namespace kestra
