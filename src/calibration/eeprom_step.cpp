#include "calibration/eeprom_step.h"

#include "calibration/display.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_record.h"

#include <optional>

namespace {

constexpr char kFactoryLabel[] = "FACTORY"; // in this spelling only

EepromState stateOf(EepromPresence presence) {
    switch (presence) {
    case EepromPresence::Present:
        return kEepromPresent;
    case EepromPresence::Absent:
        return kEepromAbsent;
    case EepromPresence::Unknown:
        break;
    }
    return kEepromUnknown;
}

void refreshBoth(PageCore& core) {
    refreshEnables(core);
    refreshStatus(core);
}

} // namespace

void detectEeprom(PageCore& core) {
    PageState& state = core.state;
    if (state.eepromState != kEepromUnknown)
        return;
    WaitCursor const cursor(core.widgets.page);
    ChangeGroup const group(core.host);
    HeadboardEeprom const eeprom = renewEeprom(core.eepromSlot, core.sensor.camera);
    EepromState const found = stateOf(probeEeprom(eeprom));
    HeadboardEepromRelease(eeprom);
    if (state.eepromState != kEepromUnknown)
        return; // another attempt, made inside this one, has its answer already
    state.eepromState = found;
    if (found == kEepromAbsent && isOpen(state.promState))
        state.promState = kFailed;
}

void saveToEepromStep(PageCore& core, StoreInEeprom const& store) {
    std::optional<WaitCursor> cursor(std::in_place, core.widgets.page);
    ChangeGroup const group(core.host);
    core.state.promState = kInProgress;
    refreshBoth(core);
    core.widgets.paintAtOnce(core.widgets.eeprom); // who saw the old state might pull the board meanwhile
    if (core.serialNumber.store)
        core.serialNumber.store();
    int32_t status = kEepromFailed;
    HeadboardEeprom eeprom;
    if (core.alive) {
        eeprom = sharedEeprom(core.eepromSlot, core.sensor.camera);
        status = store(eeprom, core.widgets.eepromLabelText().toLocal8Bit());
    }
    // Who discards the EEPROM inside a call drops what is not written: its silence is no success.
    if (!isSharedEeprom(core.eepromSlot, eeprom))
        status = kEepromFailed;
    cursor.reset();
    if (core.state.promState == kInProgress)
        core.state.promState = status == kEepromOk ? kDone : kFailedOtherwise;
    refreshBoth(core);
}

int32_t addFactoryTime(HeadboardEeprom const& eeprom, QByteArray const& label, OlderTime older) {
    if (label != kFactoryLabel)
        return kEepromOk;
    // A record behind an older one is never found, so what must be found ends its save there: the shading
    // records and the serial number always, a time where the save answers for it. The other page's save does
    // not, and keeps the new time beside the older one.
    if (older == OlderTime::MustGo)
        return EepromReplaceRecord(eeprom, makeTimeStamp());
    (void)EepromDeleteNth(eeprom, kRecordTimeStamp, nullptr, 0);
    return EepromAppendRecord(eeprom, makeTimeStamp());
}
