#include "calibration/calibration_flow.h"
#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/register_record.h"

#include <memory>
#include <optional>
#include <string_view>

namespace kestra {
// A blank EEPROM is formatted. An absent one also closes the step that saves there ("No EEPROM.").
void CalibrationFlow::detectEeprom() {
    WaitCursor const cursor(widgets.page);
    ChangeGroup const group(m_host);
    HeadboardEeprom& eeprom = m_eeprom.renew(m_sensor.camera);
    m_state.eepromState = probeEeprom(eeprom);
    HeadboardEepromRelease(eeprom);
    if (m_state.eepromState == EepromState::Absent && isOpen(m_state.promState))
        m_state.promState = kFailed;
}

void CalibrationFlow::saveToEeprom() {
    StepState const prom = m_state.promState;
    if (isFailed(m_state.lscStepState) || !(isOpen(prom) || prom == kDone || prom == kFailedOtherwise))
        return;
    auto cursor = std::make_unique<WaitCursor>(widgets.page);
    ChangeGroup const group(m_host);
    m_state.promState = kInProgress;
    showBefore(widgets.eeprom);
    if (std::function<void()> const store = serialNumber.store)
        store();
    HeadboardEeprom& eeprom = m_eeprom.take(m_sensor.camera);
    EepromStatus const status = storeInEeprom(eeprom, widgets.eepromLabelText().toLocal8Bit());
    // Who discards the EEPROM inside a call drops what is not written: its silence is no success.
    bool const isStored = status == kEepromOk && m_eeprom.isCurrent();
    cursor.reset();
    m_state.promState = isStored ? kDone : kFailedOtherwise;
    show(); // the host may take its time to close the group
}

EepromStatus CalibrationFlow::addFactoryTime(HeadboardEeprom& eeprom, QByteArray const& label,
                                             OlderTime older) {
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

void CalibrationFlow::checkSaveDirectory() {
    if (m_state.fileState == kNotEvaluated || isFailed(m_state.fileState))
        m_state.fileState = directoryExists(widgets.saveDirText().toLocal8Bit()) ? kReady : kFailed;
}

void CalibrationFlow::saveToFile() {
    if (isFailed(m_state.lscStepState))
        return;
    if (m_state.fileState == kNotEvaluated)
        checkSaveDirectory();
    if (m_state.fileState == kReady && isNumberMissing())
        m_state.fileState = kFailed;
    if (m_state.fileState != kReady || !m_state.shadingHandle)
        return;
    QByteArray const path = resultFilePath();
    if (!widgets.page) // no file under an empty name
        return;
    uint32_t const format = m_traits.savesInFormatOfKind ? kind().resultFileFormat : 0;
    m_state.fileState = m_state.shadingHandle.save(path, format) ? kDone : kFailedOtherwise;
    m_state.savedPath = QString::fromLocal8Bit(path); // of an attempt that failed the whole one
    if (m_state.fileState == kDone)
        m_state.savedPath.remove(0, m_state.savedPath.lastIndexOf(QLatin1Char(m_traits.pathSeparator)) + 1);
}

// The separator is always the host's own system's.
QByteArray CalibrationFlow::resultFilePath() const {
    auto const part = [&](QByteArray const& name) {
        return m_traits.savesInFormatOfKind ? sanitisedLabel(name) : name;
    };
    std::optional<SensorInfo> const info = m_camera.info();
    return widgets.saveDirText().toLocal8Bit() + '\\' + part(m_sensor.fileNamePart) + '_' +
           part(info ? info->name : QByteArray()) + ".ini";
}

QByteArray sanitisedLabel(QByteArray label) {
    static constexpr std::string_view kForbidden = "\\/:*?|\"<>";
    static constexpr std::string_view kInstead = "------'()";
    // The second half of a two-byte letter belongs to the letter, whatever it is.
    for (int i = 0; i < label.size(); i += beginsTwoByteLetter(label[i]) ? 2 : 1)
        if (size_t const at = kForbidden.find(label[i]); at != std::string_view::npos)
            label.data()[i] = kInstead[at];
    return label;
}
} // namespace kestra
