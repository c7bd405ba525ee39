#include "config_page/config_core.h"

#include <algorithm>

void flushChanges(ConfigCore& core, HeadboardEeprom const& eeprom) {
    (void)HeadboardEepromFlush(eeprom); // a failure is seen by what stays unwritten
    // Who discarded it meanwhile may have read the device before the last of these bytes.
    if (core.eepromSlot && !isSharedEeprom(core.eepromSlot, eeprom))
        HeadboardEepromRelease(*core.eepromSlot);
}

bool hasUnwritten(HeadboardEeprom const& eeprom) {
    return std::ranges::find(eeprom->state, ByteState::Changed) != eeprom->state.end();
}
