#pragma once

#include "headboard/headboard_eeprom.h"

/// The process-wide EEPROM, null until its first user. Every page that uses the headboard is handed a
/// reference to it and owns nothing of it.
using EepromSlot = HeadboardEeprom*;

/// What a presence test finds.
enum class EepromPresence : uint8_t {
    Unknown, ///< the device failed in another way than by its silence
    Present, ///< and formatted
    Absent,  ///< or it cannot be formatted
};

/// A share of the process-wide EEPROM; the first user creates it on its camera.
[[nodiscard]] HeadboardEeprom sharedEeprom(EepromSlot& slot, vy_Camera* camera);

/// Discards the process-wide EEPROM with all that it has not written, creates it anew and answers a share.
[[nodiscard]] HeadboardEeprom renewEeprom(EepromSlot& slot, vy_Camera* camera);

/// Whether this is still the process-wide EEPROM, which nobody has discarded.
[[nodiscard]] bool isSharedEeprom(EepromSlot const& slot, HeadboardEeprom const& eeprom);

/// Drops the image, then the object; the slot is null before a call into the library can find it.
void discardEeprom(EepromSlot& slot);

/// Looks whether the device answers and is formatted. One that is not formatted is formatted silently.
[[nodiscard]] EepromPresence probeEeprom(HeadboardEeprom eeprom);
