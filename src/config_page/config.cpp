#include "config_page/config.h"

#include "common/version.h"
#include "ui_config.h"

#include <iterator>
#include <utility>

using namespace kestra;

Config::Config(QWidget* parent, SensorRecord const& sensor, HostServices const* services, EepromSlot& eeprom,
               Wizard* wizard, SerialNumberListener serialNumberEdited)
    : GatedPage(parent, std::make_shared<ConfigFlow>(sensor, services, eeprom)) {
    Ui::Config form;
    form.setupUi(this);
    ConfigWidgets& w = m_flow->widgets;
    w.bind(this, form, wizard);
    m_flow->serialNumberEdited = std::move(serialNumberEdited);
    form.Version->setText(versionText());
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
    auto const* handler = std::begin(handlers);
    for (QComboBox* const combo : w.combos)
        connect(combo, SIGNAL(currentIndexChanged(QString)), this, *handler++);
}
