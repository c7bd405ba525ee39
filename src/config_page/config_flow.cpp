#include "config_page/config_flow.h"

#include "common/libraries.h"
#include "common/sensor.h"
#include "config_page/config_display.h"
#include "config_page/serial_number.h"
#include "headboard/eeprom_chain.h"
#include "wizard/dialogs.h"

#include <QCoreApplication>
#include <QFile>
#include <QScopedValueRollback>
#include <utility>

namespace kestra {

namespace {

constexpr char kLastNumberSetting[] = "KestraMfr SN";
constexpr char kGrabFileOption[] = "Still File";
constexpr int32_t kFormatVersion = 1;
// The transport's mode that switches a module's parallel port on.
constexpr uint32_t kModeParallelPort = 53;
constexpr uint32_t kOn = 1;

static_assert(QMessageBox::Warning == 2, "the erase question's icon is known by its number");

QString translated(char const* text) {
    return QCoreApplication::translate("Config", text);
}

} // namespace

ConfigFlow::ConfigFlow(SensorRecord const& sensor, HostServices const* services, EepromSlot& slot)
    : m_core(slot) {
    m_core.sensor = sensor;
    m_core.host = services ? Host(*services) : Host();
}

void ConfigFlow::setSerialNumberListener(std::function<void(bool isEmpty)> listener) {
    m_core.serialNumberEdited = std::move(listener);
}

void ConfigFlow::initialise() {
    {
        UpdateGuard const guard(m_core.state.updateDepth);
        m_core.widgets.fillCombos();
        m_core.widgets.fitInterfaces();
    }
    testEeprom();
}

void ConfigFlow::testEeprom() {
    if (m_core.isBusy())
        return;
    QScopedValueRollback<bool> const working(m_core.working, true);
    m_core.state.eepromState = EepromState::Unknown;
    detectEeprom();
    refillSerialNumber();
    refreshSerialState();
    readIdentificationBytes();
    refreshDisplays();
}

// A host or library call may delete the page: whoever goes on after one looks first whether it still lives.

void ConfigFlow::detectEeprom() {
    WaitCursor const cursor(m_core.widgets.page);
    ChangeGroup const group(m_core.host);
    if (!m_core.alive)
        return;
    EepromShare const eeprom = renewEeprom(m_core.eepromSlot, m_core.sensor.camera);
    EepromState const found = probeEeprom(*eeprom);
    if (!m_core.alive)
        return;
    m_core.state.eepromState = found;
    // For what it reads: the displays then find the whole chain in the image.
    (void)EepromFreeSpace(*eeprom);
}

void ConfigFlow::refillSerialNumber() {
    if (!m_core.alive || m_core.state.eepromState != EepromState::Present ||
        !m_core.widgets.serialNumber().isEmpty())
        return;
    QString const stored = storedSerialNumber(m_core);
    if (!stored.isEmpty())
        return showSerialNumber(stored,
                                translated(QT_TRANSLATE_NOOP("Config", "Serial Number loaded from EEPROM")));
    if (!m_core.alive)
        return;
    QByteArray const last = m_core.host.readTextSetting(kLastNumberSetting);
    if (std::optional<QString> const next = nextSerialNumber(QString::fromLocal8Bit(last)))
        showSerialNumber(
            *next, translated(QT_TRANSLATE_NOOP("Config", "Serial Number generated from last "
                                                          "\"Apply\".\nCount portion incremented by 1.")));
}

void ConfigFlow::showSerialNumber(QString const& number, QString const& origin) {
    // What the user entered meanwhile stays.
    if (!m_core.alive || !m_core.widgets.serialNumber().isEmpty())
        return;
    {
        UpdateGuard const guard(m_core.state.updateDepth);
        m_core.widgets.showSerialNumber(number);
    }
    m_core.widgets.showFormatMessage(origin);
    tellSerialNumberEdited();
}

void ConfigFlow::readIdentificationBytes() {
    if (!m_core.alive || m_core.state.eepromState != EepromState::Present || !m_core.eepromSlot)
        return;
    WaitCursor const cursor(m_core.widgets.page);
    uint32_t const device = m_core.eepromSlot->deviceAddress;
    // The part number comes first: it decides which interfaces there are to select from.
    for (auto const& [field, address] : kIdentificationFields) {
        uint32_t const code = readIdentification(m_core.host, device, field);
        if (!m_core.alive)
            return;
        UpdateGuard const guard(m_core.state.updateDepth);
        m_core.state.identification[size_t(field)] = identificationText(code);
        m_core.widgets.select(field, code);
        if (field == Identification::PartNumber)
            m_core.widgets.fitInterfaces();
    }
}

void ConfigFlow::apply() {
    if (m_core.isBusy())
        return;
    QScopedValueRollback<bool> const working(m_core.working, true);
    ChangeGroup const group(m_core.host);
    m_core.widgets.paintStatusAtOnce();
    if (!m_core.alive)
        return;
    // Cleared before the writing, so that a list which the user changes meanwhile is dirty again.
    bool const dirty = std::exchange(m_core.state.combosDirty, false);
    if (dirty && m_core.eepromSlot && m_core.state.eepromState == EepromState::Present)
        writeIdentificationBytes();
    refreshDisplays();
    applyEnteredNumber();
}

void ConfigFlow::writeIdentificationBytes() {
    WaitCursor const cursor(m_core.widgets.page);
    uint32_t const device = m_core.eepromSlot->deviceAddress;
    for (Identification const field : kIdentificationWriteOrder) {
        std::optional<uint8_t> const code = m_core.widgets.selectedCode(field);
        if (!code) // an unknown byte in the device stays as it is
            continue;
        writeIdentification(m_core.host, device, field, *code);
        if (!m_core.alive)
            return;
        if (field == Identification::Interface && *code == kModuleParallelCode)
            (void)Sensor(m_core.sensor.camera).setMode(kModeParallelPort, kOn);
        if (!m_core.alive)
            return;
    }
}

void ConfigFlow::applyEnteredNumber() {
    if (!m_core.alive)
        return;
    if (!isSerialNumber(m_core.widgets.serialNumber())) {
        writeWhatWaits();
        return m_core.widgets.showFormatMessage(
            translated(QT_TRANSLATE_NOOP("Config", "Incorrect format - 10 characters required.")));
    }
    applySerialNumber();
    m_core.widgets.showFormatMessage({});
}

// What an earlier Apply or Erase could not write; with a number, storing that number writes it.
void ConfigFlow::writeWhatWaits() {
    EepromShare const eeprom = sharedEeprom(m_core.eepromSlot, m_core.sensor.camera);
    if (!m_core.alive || !HeadboardEepromHasChanges(*eeprom))
        return;
    WaitCursor const cursor(m_core.widgets.page);
    flushChanges(m_core, *eeprom);
    refreshSerialState();
    refreshDisplays();
}

void ConfigFlow::applySerialNumber() {
    if (m_core.storing || !m_core.alive)
        return;
    QScopedValueRollback<bool> const storing(m_core.storing, true);
    QString const number = m_core.widgets.serialNumber();
    if (!number.isEmpty() && number != storedSerialNumber(m_core) && m_core.alive) {
        storeSerialNumber(m_core, number);
        if (!m_core.alive)
            return;
        // Also after a failure: the next number follows the last one that was asked for.
        m_core.host.writeTextSetting(kLastNumberSetting, number.toLocal8Bit().constData());
    }
    refreshSerialState();
    refreshDisplays();
}

void ConfigFlow::eraseEeprom() {
    if (m_core.isBusy() || m_core.state.eepromState != EepromState::Present)
        return;
    QScopedValueRollback<bool> const working(m_core.working, true);
    if (!isEraseConfirmed())
        return;
    formatEeprom();
    // No new check: what lies above the records was not erased, and what is selected for it stays.
    refillSerialNumber();
    refreshSerialState();
    refreshDisplays();
}

bool ConfigFlow::isEraseConfirmed() {
    m_core.state.messageBoxIcon = QMessageBox::Warning;
    QMessageBox::StandardButton const answer = showMessage(
        m_core.widgets.page,
        {m_core.state.messageBoxIcon, translated(QT_TRANSLATE_NOOP("Config", "KestraMfr")),
         translated(QT_TRANSLATE_NOOP(
             "Config", "This will erase all data on the headboard EEPROM. Click OK to continue.")),
         QMessageBox::Ok | QMessageBox::Cancel});
    return answer == QMessageBox::Ok && m_core.alive;
}

void ConfigFlow::formatEeprom() {
    WaitCursor const cursor(m_core.widgets.page);
    m_core.widgets.paintStatusAtOnce();
    EepromShare const eeprom = sharedEeprom(m_core.eepromSlot, m_core.sensor.camera);
    if (m_core.alive && EepromFormat(*eeprom, kFormatVersion) == kEepromOk)
        flushChanges(m_core, *eeprom);
}

void ConfigFlow::setGrabFileName() {
    QByteArray const number = m_core.widgets.serialNumber().toLocal8Bit();
    if (number.isEmpty())
        return;
    QByteArray const present = m_core.host.readOption(kGrabFileOption);
    if (m_core.alive)
        m_core.host.writeOption(kGrabFileOption, grabFileName(present, number).constData());
}

void ConfigFlow::openUserGuide() {
    QString const path = userGuidePath();
    if (!m_core.alive || openDocument(userGuideUrl(path)) || !m_core.alive)
        return;
    // The title is misspelt, deliberately: users know the message by it.
    showMessage(m_core.widgets.page,
                {QMessageBox::Warning,
                 translated(QT_TRANSLATE_NOOP("Config", "Velmora Manufactuing Plug-in")),
                 translated(QT_TRANSLATE_NOOP("Config", "Couldn't open the document file %1")).arg(path),
                 QMessageBox::Ok});
}

void ConfigFlow::comboChanged(Identification field) {
    if (m_core.state.updateDepth > 0)
        return;
    if (field == Identification::PartNumber) {
        UpdateGuard const guard(m_core.state.updateDepth);
        m_core.widgets.fitInterfaces();
    }
    m_core.state.combosDirty = true;
    refreshDisplays();
}

void ConfigFlow::serialNumberChanged() {
    // A number from the page itself is told of by the page, once the line edit has done its part.
    if (m_core.state.updateDepth > 0)
        return;
    refreshSerialState();
    refreshDisplays();
    tellSerialNumberEdited();
}

void ConfigFlow::tellSerialNumberEdited() {
    if (m_core.alive && m_core.serialNumberEdited)
        std::function(m_core.serialNumberEdited)(m_core.widgets.serialNumber().isEmpty());
}

void ConfigFlow::refreshSerialState() {
    if (!m_core.alive)
        return;
    QString const stored = m_core.widgets.serialNumber().isEmpty() ? QString() : storedSerialNumber(m_core);
    // The text anew: it may have been edited meanwhile.
    QString const number = m_core.widgets.serialNumber();
    if (number.isEmpty())
        m_core.state.serialState = SerialState::Empty;
    else
        m_core.state.serialState = number == stored ? SerialState::Saved : SerialState::Edited;
}

void ConfigFlow::refreshDisplays() {
    if (!m_core.alive)
        return;
    EepromShare const eeprom = sharedEeprom(m_core.eepromSlot, m_core.sensor.camera);
    RecordSpace space;
    if (m_core.alive && m_core.state.eepromState == EepromState::Present) {
        space.available = EepromFreeSpace(*eeprom, &space.used);
        space.unwritten = HeadboardEepromHasChanges(*eeprom);
    }
    if (!m_core.alive)
        return;
    m_core.widgets.show(eepromStatus(m_core.state.eepromState, space, eeprom->deviceAddress),
                        serialStatus(m_core.state.serialState));
    m_core.widgets.apply(configEnabling(m_core.state, space));
}

QString userGuidePath() {
    QString const home = QFile::decodeName(veyra2().vy_Home()); // null gives an empty text
    // Two slashes each: so the path is shown to the user when it cannot be opened.
    return (home.isEmpty() ? QCoreApplication::applicationDirPath() : home) +
           QStringLiteral("//doc//User Guides//Manufacturing Settings Tool User Guide.pdf");
}

QUrl userGuideUrl(QString const& path) {
    return QUrl(QStringLiteral("file:///") + QString::fromLatin1(QUrl::toPercentEncoding(path, "/:")));
}

} // namespace kestra
