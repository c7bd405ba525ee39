#pragma once

#include "calibration/captured_frames.h"
#include "common/host.h"
#include "headboard/headboard_eeprom.h"

#include <array>

namespace kestra {
/// Colour temperature of each illuminant, kelvin, with fractions.
using IlluminantKelvins = std::array<double, kIlluminants>;

/// Whether all was recorded that the white-balance gains of the colour-correction sets are made from.
[[nodiscard]] bool hasWhiteBalanceGains(CapturedFrames const& captured);

/// The value at `x` of the parabola through three points; the first point's value when two points have
/// one abscissa.
[[nodiscard]] double quadraticThrough(std::array<double, kIlluminants> const& xs,
                                      std::array<double, kIlluminants> const& ys, double x);

/// Puts the gains of the three colour-correction sets as the record "CCM" of a name into the EEPROM's image,
/// in place of an older one of that name as stored. Each is interpolated from the gains at capture, over the
/// illuminants' temperatures, at the temperature that the sensor has for the set.
void storeWhiteBalanceGains(HeadboardEeprom& eeprom, char const* name, Host const& host,
                            CapturedFrames const& captured, IlluminantKelvins const& temperatures);
} // namespace kestra
