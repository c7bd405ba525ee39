#pragma once

#include "calibration/page_state.h"

/// Which of the widgets that both pages share accept input.
struct Enabling {
    bool runAll = false;     ///< the Run All button
    bool setup = false;      ///< the setup button
    bool adjust = false;     ///< exposure, colour balance, calibration, uniformity, directory and its chooser
    bool parameters = false; ///< falloff and EEPROM label with their captions
    bool fileSave = false;   ///< the save-to-file button
    bool eepromSave = false; ///< the save-to-EEPROM button
    bool eepromSaveStatus = false; ///< the EEPROM status text
};

[[nodiscard]] Enabling enablingOf(PageState const& state);
