#pragma once

#include "headboard/headboard_eeprom.h"

#include <span>

namespace kestra {
// The bytes of the device, by the way that the open sensor offers. Both answer the library's result: 0, 12
// when the device does not answer, anything else for a failure, also where there is no way or no camera.
// After a failure the range is undefined. `sensor` is the caller's: it outlives one that the EEPROM loses
// meanwhile.

[[nodiscard]] int readDevice(HeadboardEeprom const& eeprom, Sensor const& sensor, uint32_t offset,
                             std::span<uint8_t> bytes);
[[nodiscard]] int writeDevice(HeadboardEeprom const& eeprom, Sensor const& sensor, uint32_t offset,
                              std::span<uint8_t const> bytes);
} // namespace kestra
