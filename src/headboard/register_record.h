#pragma once

#include "headboard/headboard_eeprom.h"
#include "headboard/record_format.h"

namespace kestra {
/// Kind and generation of a sensor.
struct SensorModel {
    uint32_t sensorKind{};
    uint32_t variant{};
};

/// Stores the sensor's shading-correction registers, as they are now, as the record "PGA" of a name (null:
/// "DEFAULT"), in the place of an older one of that name. Its replay switches the correction off, loads the
/// registers and switches it on. The correction is off while the registers are read, and on again afterwards
/// if it was. `fallback` counts while the library has no description of the sensor.
///
/// Only the image changes: `HeadboardEepromFlush` writes it. After `kEepromNoRoom` the older record is gone
/// from the image.
[[nodiscard]] EepromStatus saveShadingRegisters(HeadboardEeprom& eeprom, char const* name,
                                                SensorModel fallback);

/// The same for the colour-correction registers and the record "CCM"; nothing is switched.
[[nodiscard]] EepromStatus saveCcmRegisters(HeadboardEeprom& eeprom, char const* name);

/// The record "Time Stamp" of the current UTC time, as text such as "2024/05/31 23:59:07" with its NUL.
[[nodiscard]] EepromRecord makeTimeStamp();
} // namespace kestra
