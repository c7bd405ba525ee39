#include "headboard/eeprom_slot.h"

#include "headboard/eeprom_chain.h"

#include <memory>
#include <utility>

HeadboardEeprom sharedEeprom(EepromSlot& slot, vy_Camera* camera) {
    if (slot)
        return *slot;
    HeadboardEeprom eeprom = HeadboardEepromCreate(camera);
    // The library may have spun events while the object was made, and someone else been the first user.
    if (!slot)
        slot = new HeadboardEeprom(eeprom);
    return *slot;
}

HeadboardEeprom renewEeprom(EepromSlot& slot, vy_Camera* camera) {
    discardEeprom(slot);
    return sharedEeprom(slot, camera);
}

bool isSharedEeprom(EepromSlot const& slot, HeadboardEeprom const& eeprom) {
    return slot && slot->operator->() == eeprom.operator->();
}

void discardEeprom(EepromSlot& slot) {
    std::unique_ptr<HeadboardEeprom> const discarded(std::exchange(slot, nullptr));
    if (discarded)
        HeadboardEepromRelease(*discarded);
}

EepromPresence probeEeprom(HeadboardEeprom eeprom) {
    int32_t status = EepromCheckHeader(eeprom);
    if (status == kEepromNotFormatted) {
        status = EepromFormat(eeprom, -1);
        if (status == kEepromOk)
            status = HeadboardEepromFlush(eeprom);
        return status == kEepromOk ? EepromPresence::Present : EepromPresence::Absent;
    }
    if (status == kEepromOk)
        return EepromPresence::Present;
    return status == kEepromNoAnswer ? EepromPresence::Absent : EepromPresence::Unknown;
}
