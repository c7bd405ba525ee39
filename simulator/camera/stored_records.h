#pragma once

#include "simulator/camera/eeprom_contents.h"
#include "simulator/camera/register_map.h"
#include "simulator/camera/simulated_camera.h"

#include <vector>

namespace simulator {
/// The chain of records for whoever looks at the EEPROM, with the names of the registers that lie where an
/// entry says. It stops at the first record that runs over the end, and tells so as that record's fault.
[[nodiscard]] std::vector<StoredRecord> storedRecords(EepromContents const& contents,
                                                      uint32_t registerAddressWidth, RegisterMap& registers);
} // namespace simulator
