#pragma once

#include "common/host.h"
#include "common/sensor.h"
#include "config_page/config_view.h"
#include "headboard/headboard_eeprom.h"
#include "wizard/gate.h"

#include <QString>
#include <QUrl>
#include <functional>

namespace kestra {
/// What the configuration page knows and does. Every call from outside comes through the gate and holds a
/// share of the flow; those that need none say so.
class ConfigFlow {
public:
    ConfigFlow(SensorRecord const& sensor, HostServices const* services, EepromSlot& slot);

    Gate gate;
    ConfigWidgets widgets;
    /// Told that the serial number was edited, and whether it is empty now; may be null.
    std::function<void(bool isEmpty)> serialNumberEdited;

    [[nodiscard]] ConfigState const& state() const { return m_state; }
    /// The page is being destroyed: from now on nothing reaches host, camera and widgets any more. Without
    /// the gate.
    void pageDestroyed();

    void initialise();
    void testEeprom();
    void apply();
    void eraseEeprom();
    void setGrabFileName();
    void openUserGuide();
    void comboChanged(Identification field);
    void serialNumberChanged();
    void applySerialNumber();

    /// Runs a step that came through the gate; nothing is thrown out of it.
    template <typename Step>
    void press(Step const& step) noexcept {
        guarded("a step of the page", step);
        m_eeprom.end();
    }

private:
    void detectEeprom();
    void refillSerialNumber();
    void showSerialNumber(QString const& number, QString const& origin);
    void tellSerialNumberEdited();
    void readIdentificationBytes();
    void writeIdentificationBytes();
    void writeWhatWaits();
    [[nodiscard]] bool isEraseConfirmed();
    void formatEeprom();
    [[nodiscard]] QString storedNumber();
    void refreshSerialState();
    void show();

    SensorRecord m_sensor{}; ///< copy of the host's record
    Host m_host;             ///< of a copy of the host's table
    Sensor m_camera{nullptr};
    EepromUse m_eeprom;
    ConfigState m_state;
};

/// Where the host's folder has the user guide. The folder is what the sensor-access library calls its home,
/// or, where it tells none, that of the running program.
[[nodiscard]] QString userGuidePath();

/// The path as the desktop takes it; signs that mean something in an address stay a part of the name.
[[nodiscard]] QUrl userGuideUrl(QString const& path);
} // namespace kestra
