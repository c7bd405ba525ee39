#include "config_page/config.h"

#include "common/version.h"
#include "config_page/config_flow.h"
#include "ui_config.h"

#include <utility>

using namespace kestra;

Config::Config(QWidget* parent, SensorRecord const& sensor, HostServices const* services, EepromSlot& eeprom,
               Wizard* wizard, SerialNumberListener serialNumberEdited)
    : QDialog(parent), m_flow(std::make_shared<ConfigFlow>(sensor, services, eeprom)) {
    Ui::Config form;
    form.setupUi(this);
    m_flow->widgets.bind(this, form, wizard);
    m_flow->serialNumberEdited = std::move(serialNumberEdited);
    form.Version->setText(versionText());
    connectWidgets();
}

Config::~Config() {
    m_flow->pageDestroyed();
}

void Config::connectWidgets() {
    ConfigWidgets const& w = m_flow->widgets;
    connect(w.EEPROM_Test, &QPushButton::clicked, this, &Config::OnBnClickedEepromTest);
    connect(w.Apply, &QPushButton::clicked, this, &Config::OnBnClickedApply);
    connect(w.setGrabFileName, &QPushButton::clicked, this, &Config::OnBnClickedSetGrabFileName);
    connect(w.EEPROM_Erase, &QPushButton::clicked, this, &Config::OnBnClickedEepromErase);
    connect(w.Doc_UserGuide, &QPushButton::clicked, this, &Config::OnBnClickedDocUserguide);
    connect(w.SN, &QLineEdit::textChanged, this, &Config::OnEnChangeSn);
    // By name: the overload with the text is marked obsolete.
    char const* const handlers[] = {
        SLOT(OnCbnSelchangePnCombo(QString)), SLOT(OnCbnSelchangeIfCombo(QString)),
        SLOT(OnCbnSelchangeMiCombo(QString)), SLOT(OnCbnSelchangeSpCombo(QString))};
    for (size_t i = 0; i < w.combos.size(); ++i)
        connect(w.combos[i], SIGNAL(currentIndexChanged(QString)), this, handlers[i]);
}

QString Config::serialNumber() const {
    return m_flow->widgets.serialNumber();
}

ConfigState const& Config::state() const {
    return m_flow->state();
}

void Config::reject() {}

template <typename Step>
void Config::press(Step step) {
    std::shared_ptr const flow = m_flow; // the step's own share
    guarded("a button", [&] {
        flow->gate.runOrKeep([&kept = *flow, step] {
            guarded("a step of the page", [&] { std::invoke(step, kept); });
            kept.stepEnded();
        });
    });
}

template <typename Step>
void Config::edit(Step step) {
    if (m_flow->state().updateDepth == 0)
        press(step);
}

void Config::changeCombo(Identification field) {
    edit([field](ConfigFlow& flow) { flow.comboChanged(field); });
}

void Config::initialise() {
    press(&ConfigFlow::initialise);
}
void Config::applySerialNumber() {
    press(&ConfigFlow::applySerialNumber);
}
void Config::OnBnClickedEepromTest() {
    press(&ConfigFlow::testEeprom);
}
void Config::OnBnClickedApply() {
    press(&ConfigFlow::apply);
}
void Config::OnBnClickedSetGrabFileName() {
    press(&ConfigFlow::setGrabFileName);
}
void Config::OnBnClickedEepromErase() {
    press(&ConfigFlow::eraseEeprom);
}
void Config::OnBnClickedDocUserguide() {
    press(&ConfigFlow::openUserGuide);
}
void Config::OnCbnSelchangeIfCombo(QString const&) {
    changeCombo(Identification::Interface);
}
void Config::OnCbnSelchangeMiCombo(QString const&) {
    changeCombo(Identification::Market);
}
void Config::OnCbnSelchangePnCombo(QString const&) {
    changeCombo(Identification::PartNumber);
}
void Config::OnCbnSelchangeSpCombo(QString const&) {
    changeCombo(Identification::Processing);
}
// The signature is published, value and all. NOLINTNEXTLINE(performance-unnecessary-value-param)
void Config::OnEnChangeSn(QString) {
    edit(&ConfigFlow::serialNumberChanged);
}
