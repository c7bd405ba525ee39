#include "config_page/config_flow.h"

#include "common/libraries.h"
#include "config_page/serial_number.h"
#include "headboard/eeprom_chain.h"
#include "wizard/dialogs.h"

#include <QCoreApplication>
#include <QFile>

namespace kestra {
namespace {
constexpr char kLastNumberSetting[] = "KestraMfr SN";
constexpr char kGrabFileOption[] = "Still File";
constexpr int32_t kFormatVersion = 1;
// The transport's mode that switches a module's parallel port on.
constexpr uint32_t kModeParallelPort = 53;
constexpr uint32_t kOn = 1;

static_assert(QMessageBox::Warning == 2, "the erase question's icon is known by its number");
} // namespace

ConfigFlow::ConfigFlow(SensorRecord const& sensor, HostServices const* services, EepromSlot& slot)
    : m_sensor(sensor), m_host(services ? Host(*services) : Host()), m_camera(sensor.camera), m_eeprom(slot) {
}

void ConfigFlow::pageDestroyed() {
    gate.close();
    widgets = {};
    serialNumberEdited = {};
    m_sensor = {};
    m_host = {};
    m_camera = Sensor(nullptr);
    m_eeprom.abandon();
}

void ConfigFlow::initialise() {
    {
        UpdateGuard const guard(m_state.updateDepth);
        widgets.fillCombos();
        widgets.fitInterfaces();
    }
    testEeprom();
}

void ConfigFlow::testEeprom() {
    m_state.eepromState = EepromState::Unknown;
    detectEeprom();
    refillSerialNumber();
    refreshSerialState();
    readIdentificationBytes();
    show();
}

void ConfigFlow::detectEeprom() {
    WaitCursor const cursor(widgets.page);
    ChangeGroup const group(m_host);
    HeadboardEeprom& eeprom = m_eeprom.renew(m_sensor.camera);
    m_state.eepromState = probeEeprom(eeprom);
    // For what it reads: the displays then find the whole chain in the image.
    (void)EepromFreeSpace(eeprom);
}

void ConfigFlow::refillSerialNumber() {
    if (m_state.eepromState != EepromState::Present || !widgets.serialNumber().isEmpty())
        return;
    QString const stored = storedNumber();
    if (!stored.isEmpty())
        return showSerialNumber(stored, ConfigText::tr("Serial Number loaded from EEPROM"));
    QByteArray const last = m_host.readTextSetting(kLastNumberSetting);
    if (std::optional<QString> const next = nextSerialNumber(QString::fromLocal8Bit(last)))
        showSerialNumber(
            *next,
            ConfigText::tr("Serial Number generated from last \"Apply\".\nCount portion incremented by 1."));
}

void ConfigFlow::showSerialNumber(QString const& number, QString const& origin) {
    // What the user entered meanwhile stays.
    if (!widgets.serialNumber().isEmpty())
        return;
    {
        UpdateGuard const guard(m_state.updateDepth);
        widgets.showSerialNumber(number);
    }
    widgets.showFormatMessage(origin);
    tellSerialNumberEdited();
}

void ConfigFlow::readIdentificationBytes() {
    if (m_state.eepromState != EepromState::Present)
        return;
    WaitCursor const cursor(widgets.page);
    uint32_t const device = m_eeprom.take(m_sensor.camera).deviceAddress;
    // The part number comes first: it decides which interfaces there are to select from.
    for (Identification const field : kIdentificationReadOrder) {
        uint32_t const code = readIdentification(m_host, device, field);
        UpdateGuard const guard(m_state.updateDepth);
        m_state.identification[size_t(field)] = identificationText(code);
        widgets.select(field, code);
        if (field == Identification::PartNumber)
            widgets.fitInterfaces();
    }
}

void ConfigFlow::apply() {
    ChangeGroup const group(m_host);
    widgets.paintStatusAtOnce();
    if (m_state.combosDirty && m_state.eepromState == EepromState::Present)
        writeIdentificationBytes();
    m_state.combosDirty = false;
    show();
    if (isSerialNumber(widgets.serialNumber())) {
        applySerialNumber();
        return widgets.showFormatMessage({});
    }
    writeWhatWaits();
    widgets.showFormatMessage(ConfigText::tr("Incorrect format - 10 characters required."));
}

void ConfigFlow::writeIdentificationBytes() {
    WaitCursor const cursor(widgets.page);
    uint32_t const device = m_eeprom.take(m_sensor.camera).deviceAddress;
    for (Identification const field : kIdentificationWriteOrder) {
        std::optional<uint8_t> const code = widgets.selectedCode(field);
        if (!code) // an unknown byte in the device stays as it is
            continue;
        writeIdentification(m_host, device, field, *code);
        if (field == Identification::Interface && *code == kModuleParallelCode)
            (void)m_camera.setMode(kModeParallelPort, kOn);
    }
}

// What an earlier Apply or Erase could not write; with a number, storing that number writes it.
void ConfigFlow::writeWhatWaits() {
    HeadboardEeprom& eeprom = m_eeprom.take(m_sensor.camera);
    if (!HeadboardEepromHasChanges(eeprom))
        return;
    WaitCursor const cursor(widgets.page);
    m_eeprom.flush();
    refreshSerialState();
    show();
}

void ConfigFlow::applySerialNumber() {
    QString const number = widgets.serialNumber();
    if (!number.isEmpty() && number != storedNumber()) {
        {
            WaitCursor const cursor(widgets.page);
            if (putSerialNumber(m_eeprom.take(m_sensor.camera), number))
                m_eeprom.flush();
        }
        // Also after a failure: the next number follows the last one that was asked for.
        m_host.writeTextSetting(kLastNumberSetting, number.toLocal8Bit().constData());
    }
    refreshSerialState();
    show();
}

void ConfigFlow::eraseEeprom() {
    if (m_state.eepromState != EepromState::Present || !isEraseConfirmed())
        return;
    formatEeprom();
    // No new check: what lies above the records was not erased, and what is selected for it stays.
    refillSerialNumber();
    refreshSerialState();
    show();
}

bool ConfigFlow::isEraseConfirmed() {
    m_state.messageBoxIcon = QMessageBox::Warning;
    Gate::Outside const outside(gate);
    QMessageBox::StandardButton const answer = showMessage(
        widgets.page,
        {m_state.messageBoxIcon, ConfigText::tr("KestraMfr"),
         ConfigText::tr("This will erase all data on the headboard EEPROM. Click OK to continue."),
         QMessageBox::Ok | QMessageBox::Cancel});
    return answer == QMessageBox::Ok;
}

void ConfigFlow::formatEeprom() {
    WaitCursor const cursor(widgets.page);
    widgets.paintStatusAtOnce();
    HeadboardEeprom& eeprom = m_eeprom.take(m_sensor.camera);
    if (EepromFormat(eeprom, kFormatVersion) == kEepromOk)
        m_eeprom.flush();
}

void ConfigFlow::setGrabFileName() {
    QByteArray const number = widgets.serialNumber().toLocal8Bit();
    if (number.isEmpty())
        return;
    QByteArray const present = m_host.readOption(kGrabFileOption);
    m_host.writeOption(kGrabFileOption, grabFileName(present, number).constData());
}

void ConfigFlow::openUserGuide() {
    QString const path = userGuidePath();
    Gate::Outside const outside(gate);
    if (!widgets.page || openDocument(userGuideUrl(path)) || !widgets.page) // no box for a page that is gone
        return;
    // The title is misspelt, deliberately: users know the message by it.
    showMessage(widgets.page,
                {QMessageBox::Warning, ConfigText::tr("Velmora Manufactuing Plug-in"),
                 ConfigText::tr("Couldn't open the document file %1").arg(path), QMessageBox::Ok});
}

void ConfigFlow::comboChanged(Identification field) {
    if (field == Identification::PartNumber) {
        UpdateGuard const guard(m_state.updateDepth);
        widgets.fitInterfaces();
    }
    m_state.combosDirty = true;
    show();
}

void ConfigFlow::serialNumberChanged() {
    refreshSerialState();
    show();
    tellSerialNumberEdited();
}

// A number from the page itself is told of by the page, once the line edit has done its part.
void ConfigFlow::tellSerialNumberEdited() {
    if (std::function<void(bool)> const tell = serialNumberEdited)
        tell(widgets.serialNumber().isEmpty());
}

QString ConfigFlow::storedNumber() {
    ChangeGroup const group(m_host);
    return storedSerialNumber(m_eeprom.take(m_sensor.camera));
}

void ConfigFlow::refreshSerialState() {
    QString const number = widgets.serialNumber();
    if (number.isEmpty())
        m_state.serialState = SerialState::Empty;
    else
        m_state.serialState = number == storedNumber() ? SerialState::Saved : SerialState::Edited;
}

void ConfigFlow::show() {
    HeadboardEeprom& eeprom = m_eeprom.take(m_sensor.camera);
    m_state.space = {};
    if (m_state.eepromState == EepromState::Present) {
        m_state.space.available = EepromFreeSpace(eeprom, &m_state.space.used);
        m_state.space.unwritten = HeadboardEepromHasChanges(eeprom);
    }
    m_state.busAddress = eeprom.deviceAddress;
    widgets.show(viewOf(m_state));
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
