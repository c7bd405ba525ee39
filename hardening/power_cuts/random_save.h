#pragma once

#include "headboard/headboard_eeprom.h"
#include "headboard/record_format.h"
#include "simulator/camera/eeprom_device.h"

#include <vector>

namespace power_cuts {
/// What one press of a button stores: mostly one record, with a factory calibration its time stamp too.
using Save = std::vector<kestra::EepromRecord>;

/// A board with a history of saves, and the save during which the power will fail.
struct Scene {
    simulator::EepromContents before;
    Save save;
};

/// The same number gives the same scene.
[[nodiscard]] Scene randomScene(uint32_t number);

/// Does a save as the pages do: the records replace older ones in the image, then the image is flushed.
[[nodiscard]] int32_t store(kestra::EepromShare const& eeprom, Save const& save);
} // namespace power_cuts
