#pragma once

#include "config_page/config_state.h"
#include "wizard/bullets.h"

#include <QString>
#include <cstdint>

/// What stands beside a step: its text and its bullet.
struct ConfigStatus {
    QString text;
    Bullet bullet;
};

/// Room in the record store, in bytes; a negative `available` is the failure to find out.
struct RecordSpace {
    int32_t used = 0;
    int32_t available = 0;
    bool unwritten = false; ///< the figures are those of changes that the device has not taken yet
};

[[nodiscard]] ConfigStatus eepromStatus(uint32_t eepromState, RecordSpace const& space, uint32_t busAddress);
[[nodiscard]] ConfigStatus serialStatus(uint32_t serialState);

/// Which controls can be used. A combo box is enabled only when it also has items.
struct ConfigEnabling {
    bool combos = false;
    bool apply = false;
    bool touchesErase = false; ///< only then `erase` is set; without an EEPROM the button stays as it is
    bool erase = false;
};

[[nodiscard]] ConfigEnabling configEnabling(ConfigState const& state, RecordSpace const& space);
