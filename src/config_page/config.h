#pragma once

#include "headboard/headboard_eeprom.h"
#include "published/host_records.h"

#include <QDialog>
#include <functional>
#include <memory>

class Wizard;
namespace kestra {
class ConfigFlow;
struct ConfigState;
enum class Identification : uint8_t;
} // namespace kestra

/// The headboard configuration page: it checks and erases the headboard EEPROM, records the headboard's four
/// identification bytes and its serial number, and names the host's grabbed pictures after the number.
class Config : public QDialog {
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
    ~Config() override;

    /// Fills the lists and checks the EEPROM; called once, after construction.
    void initialise();
    /// Stores the serial number in the EEPROM unless it is empty or stored already; the calibration pages
    /// call it before they save there. A number that could not be stored stays shown as not saved.
    void applySerialNumber();
    /// The serial number as entered.
    [[nodiscard]] QString serialNumber() const;

    /// A page is a part of its tab: the Escape key leaves it there.
    void reject() override;

    [[nodiscard]] kestra::ConfigState const& state() const;

public slots:
    void OnBnClickedEepromTest();
    void OnBnClickedApply();
    void OnBnClickedSetGrabFileName();
    void OnBnClickedEepromErase();
    void OnBnClickedDocUserguide();
    void OnCbnSelchangeIfCombo(QString const& text);
    void OnCbnSelchangeMiCombo(QString const& text);
    void OnCbnSelchangePnCombo(QString const& text);
    void OnCbnSelchangeSpCombo(QString const& text);
    void OnEnChangeSn(QString text);

private:
    /// A button: keeps what arrives inside a step. Nothing is thrown.
    template <typename Step>
    void press(Step step);
    /// A field: a change that the page itself makes is none of the user's.
    template <typename Step>
    void edit(Step step);
    void changeCombo(kestra::Identification field);
    void connectWidgets();

    std::shared_ptr<kestra::ConfigFlow> const m_flow;
};
