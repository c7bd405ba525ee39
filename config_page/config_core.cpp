#include "config_page/config_core.h"

void flushOrDrop(ConfigCore& core, HeadboardEeprom const& eeprom, int32_t status) {
    if (status == kEepromOk)
        status = HeadboardEepromFlush(eeprom);
    if (status != kEepromOk)
        HeadboardEepromRelease(sharedEeprom(core.eepromSlot, core.sensor.camera));
}
