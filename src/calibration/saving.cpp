#include "calibration/saving.h"

#include "calibration/display.h"
#include "common/libraries.h"
#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_record.h"

#include <optional>

namespace kestra {

namespace {

constexpr char kFactoryLabel[] = "FACTORY"; // in this spelling only

void refreshBoth(PageCore& core) {
    refreshEnables(core);
    refreshStatus(core);
}

// The separator is always the host's own system's.
QByteArray resultFilePath(PageCore const& core, ResultFile const& file) {
    auto const part = [&](QByteArray const& name) {
        return file.sanitisesNames ? sanitisedLabel(name) : name;
    };
    std::optional<SensorInfo> const info = core.camera().info();
    if (!core.alive)
        return {};
    return core.widgets.saveDirText().toLocal8Bit() + '\\' + part(core.sensor.fileNamePart) + '_' +
           part(info ? info->name : QByteArray()) + ".ini";
}

} // namespace

void detectEeprom(PageCore& core) {
    PageState& state = core.state;
    if (state.eepromState != EepromState::Unknown)
        return;
    WaitCursor const cursor(core.widgets.page);
    ChangeGroup const group(core.host);
    EepromShare const eeprom = renewEeprom(core.eepromSlot, core.sensor.camera);
    EepromState const found = probeEeprom(*eeprom);
    HeadboardEepromRelease(*eeprom);
    if (state.eepromState != EepromState::Unknown)
        return; // another attempt, made inside this one, has its answer already
    state.eepromState = found;
    if (found == EepromState::Absent && isOpen(state.promState))
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
    EepromStatus status = kEepromFailed;
    EepromShare eeprom;
    if (core.alive) {
        eeprom = sharedEeprom(core.eepromSlot, core.sensor.camera);
        status = store(*eeprom, core.widgets.eepromLabelText().toLocal8Bit());
    }
    // Who discards the EEPROM inside a call drops what is not written: its silence is no success.
    if (!eeprom || core.eepromSlot != eeprom.data())
        status = kEepromFailed;
    cursor.reset();
    if (core.state.promState == kInProgress)
        core.state.promState = status == kEepromOk ? kDone : kFailedOtherwise;
    refreshBoth(core);
}

EepromStatus addFactoryTime(HeadboardEeprom& eeprom, QByteArray const& label, OlderTime older) {
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

void checkSaveDirectory(PageCore& core) {
    PageState& state = core.state;
    if (state.fileState != kNotEvaluated && !isFailed(state.fileState))
        return;
    state.fileState = directoryExists(core.widgets.saveDirText().toLocal8Bit()) ? kReady : kFailed;
}

void saveResultFile(PageCore& core, ResultFile const& file) {
    PageState& state = core.state;
    ShadingHandle const handle = state.shadingHandle;
    if (!handle || isFailed(state.lscStepState))
        return;
    QByteArray const path = resultFilePath(core, file);
    if (!core.alive)
        return;
    state.savedPath = QString::fromLocal8Bit(path);
    int const result = shadefit().sf_DumpRegFile(handle.get(), path.constData(), file.format, 0, 0);
    if (state.shadingHandle == handle) // not reset meanwhile
        state.fileState = result == 0 ? kDone : kFailedOtherwise;
}

QByteArray sanitisedLabel(QByteArray label) {
    for (int i = 0; i < label.size(); ++i) {
        if (beginsTwoByteLetter(label[i])) {
            ++i; // its other half belongs to the letter
            continue;
        }
        switch (char& c = label.data()[i]; c) {
        case '\\':
        case '/':
        case ':':
        case '*':
        case '?':
        case '|':
            c = '-';
            break;
        case '"':
            c = '\'';
            break;
        case '<':
            c = '(';
            break;
        case '>':
            c = ')';
            break;
        default:
            break;
        }
    }
    return label;
}

} // namespace kestra
