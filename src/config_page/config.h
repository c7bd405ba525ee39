#pragma once

#include "config_page/config_flow.h"
#include "wizard/gated_page.h"

/// The headboard configuration page: it checks and erases the headboard EEPROM, records the headboard's four
/// identification bytes and its serial number, and names the host's grabbed pictures after the number.
class Config : public kestra::GatedPage<kestra::ConfigFlow> {
    Q_OBJECT

public:
    /// Told when the serial number was edited, by the user or from code, and whether it is empty now; whoever
    /// makes the page passes it on to the calibration pages.
    using SerialNumberListener = std::function<void(bool isEmpty)>;

    /// Copies both records; without services nothing is asked of the host. The slot is that of the
    /// process-wide EEPROM and outlives the page. The bullets stay the wizard's; without a wizard there are
    /// none.
    Config(QWidget* parent, SensorRecord const& sensor, HostServices const* services,
           kestra::EepromSlot& eeprom, Wizard* wizard, SerialNumberListener serialNumberEdited = {});
    ~Config() override { m_flow->pageDestroyed(); }

    /// Fills the lists and checks the EEPROM; called once, after construction.
    void initialise() { press(&Flow::initialise); }
    /// Stores the serial number in the EEPROM unless it is empty or stored already; the calibration pages
    /// call it before they save there. A number that could not be stored stays shown as not saved.
    void applySerialNumber() { press(&Flow::applySerialNumber); }
    /// The serial number as entered.
    [[nodiscard]] QString serialNumber() const { return m_flow->widgets.serialNumber(); }

    [[nodiscard]] kestra::ConfigState const& state() const { return m_flow->state(); }

public slots:
    void OnBnClickedEepromTest() { press(&Flow::testEeprom); }
    void OnBnClickedApply() { press(&Flow::apply); }
    void OnBnClickedSetGrabFileName() { press(&Flow::setGrabFileName); }
    void OnBnClickedEepromErase() { press(&Flow::eraseEeprom); }
    void OnBnClickedDocUserguide() { press(&Flow::openUserGuide); }
    void OnCbnSelchangeIfCombo(QString const&) { changeCombo(kestra::Identification::Interface); }
    void OnCbnSelchangeMiCombo(QString const&) { changeCombo(kestra::Identification::Market); }
    void OnCbnSelchangePnCombo(QString const&) { changeCombo(kestra::Identification::PartNumber); }
    void OnCbnSelchangeSpCombo(QString const&) { changeCombo(kestra::Identification::Processing); }
    // Published with a value. NOLINTNEXTLINE(performance-unnecessary-value-param)
    void OnEnChangeSn(QString) { edit(&Flow::serialNumberChanged); }

private:
    using Flow = kestra::ConfigFlow;

    void changeCombo(kestra::Identification field) {
        edit([field](Flow& flow) { flow.comboChanged(field); });
    }
};
