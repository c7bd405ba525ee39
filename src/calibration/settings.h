#pragma once

#include <QString>
#include <cstdint>

namespace kestra {

/// Allowed falloff in per cent of a falloff text, its last character (the sign) dropped; 0 when it is no
/// number.
[[nodiscard]] int32_t falloffPercent(QString const& text);
/// The same within the limits that the host and the settings store are given.
[[nodiscard]] int32_t clampedFalloffPercent(QString const& text);

} // namespace kestra
