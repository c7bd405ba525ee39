#pragma once

#include "calibration/page_core.h"

/// Detects the headboard EEPROM while that is not known: `eepromState` becomes present or absent. An absent
/// one also closes the save-to-EEPROM step ("No EEPROM.").
void detectEeprom(PageCore& core);

/// Saves the sensor's shading registers to the headboard EEPROM.
void saveCalibrationToEeprom(PageCore& core);
