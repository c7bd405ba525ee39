#pragma once

#include "config_page/config_core.h"

#include <QString>
#include <QUrl>

namespace kestra {

/// What the configuration page does. Page and running routines share it: every routine may be the one inside
/// which the page goes away, and then does nothing more.
class ConfigFlow {
public:
    ConfigFlow(SensorRecord const& sensor, HostServices const* services, EepromSlot& slot);

    [[nodiscard]] ConfigWidgets& widgets() { return m_core.widgets; }
    [[nodiscard]] ConfigState const& state() const { return m_core.state; }
    void setSerialNumberListener(std::function<void(bool isEmpty)> listener);
    void pageDestroyed() { m_core.alive = false; }

    void initialise();
    void testEeprom();
    void apply();
    void eraseEeprom();
    void setGrabFileName();
    void openUserGuide();
    void comboChanged(Identification field);
    void serialNumberChanged();
    void applySerialNumber();

private:
    void detectEeprom();
    void refillSerialNumber();
    void showSerialNumber(QString const& number, QString const& origin);
    void tellSerialNumberEdited();
    void readIdentificationBytes();
    void writeIdentificationBytes();
    void applyEnteredNumber();
    void writeWhatWaits();
    [[nodiscard]] bool isEraseConfirmed();
    void formatEeprom();
    void refreshSerialState();
    void refreshDisplays();

    ConfigCore m_core;
};

/// Where the host's folder has the user guide. The folder is what the sensor-access library calls its home,
/// or, where it tells none, that of the running program.
[[nodiscard]] QString userGuidePath();

/// The path as the desktop takes it; signs that mean something in an address stay a part of the name.
[[nodiscard]] QUrl userGuideUrl(QString const& path);

} // namespace kestra
