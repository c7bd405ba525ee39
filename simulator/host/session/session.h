#pragma once

#include "simulator/host/report/summary_lines.h"
#include "simulator/host/session/command_line.h"
#include "simulator/host/session/eeprom_store.h"
#include "simulator/host/session/frame_delivery.h"
#include "simulator/host/session/service_desk.h"

#include <memory>

class QDialog;

namespace pictara {
/// The camera with light, lens and noise as asked for; null with a message for the user.
[[nodiscard]] std::unique_ptr<simulator::SimulatedCamera> openCamera(Options const& options, QString* error);
/// The absolute name of a folder that exists by now and takes files; empty with a message for the user.
[[nodiscard]] std::optional<QString> createdFolder(QString const& name, QString* error);

/// How the host sees the picture.
struct ViewingConditions {
    uint32_t exposure = 0; ///< rows
    int32_t redGain = 0;   ///< relative to green, thousandths
    int32_t blueGain = 0;  ///< relative to green, thousandths
};

/// One sitting of the host: camera, registers, settings, services and plug-in, built from the ground up and
/// taken down from the top.
class Session {
public:
    /// Null with a message for the user.
    [[nodiscard]] static std::unique_ptr<Session> open(Options const& options, QString* error);
    ~Session();

    /// Null with a message for the user when the plug-in makes no dialog. A parent outlives `closePlugin()`.
    [[nodiscard]] QDialog* openDialog(QWidget* parent, QString* error);
    /// Takes dialog, pages and plug-in away.
    void closePlugin();

    /// The camera and what lies before it now.
    [[nodiscard]] Scene scene() const;
    /// Exposure and gains as they are now.
    [[nodiscard]] ViewingConditions conditions() const;
    void setLight(simulator::Light const& light);
    /// Replaces the fault planned before; operations of the EEPROM count from now on, and none stands for the
    /// next one. False for a name that is none of a fault.
    bool injectFault(FaultWish const& wish);
    /// Writes a register as the host's own register view does. The sensor may refuse the value.
    void setRegister(QByteArray const& name, uint32_t value);
    /// Puts a lamp of that colour temperature, kelvin, before the camera; nothing else of the light changes.
    void bringLamp(double kelvin);

    /// Writes the EEPROM to its file, when it has one. False with a message for the user.
    [[nodiscard]] bool keepEeprom(QString* error) const { return m_eeprom.keep(*m_camera, error); }
    /// Empty when the EEPROM is not kept.
    [[nodiscard]] QString const& eepromFile() const { return m_eeprom.file(); }
    [[nodiscard]] uint64_t replayedWrites() const { return m_eeprom.replayedWrites(); }

    [[nodiscard]] simulator::SimulatedCamera& camera() { return *m_camera; }
    [[nodiscard]] SensorRegisters& registers() { return m_registers; }
    [[nodiscard]] FrameDelivery& frames() { return m_frames; }
    [[nodiscard]] StateVariables& states() { return m_states; }
    [[nodiscard]] ServiceDesk const& desk() const { return m_desk; }
    [[nodiscard]] QString const& outputFolder() const { return m_outputFolder; }

private:
    Session(std::unique_ptr<simulator::SimulatedCamera> camera, EepromStore eeprom, Options const& options,
            QString const& outputFolder, QString const& iniFile, QString const& settingsFile);

    // In the order in which they stand on one another.
    std::unique_ptr<simulator::SimulatedCamera> m_camera;
    EepromStore m_eeprom;
    QString m_shadingFile;
    uint64_t m_seed;
    QString m_outputFolder;
    StateVariables m_states;
    SettingsStore m_settings;
    PluginLibrary m_plugin;
    SensorRegisters m_registers;
    ServiceDesk m_desk;
    FrameDelivery m_frames;
    SensorRecord m_sensor{};
    bool m_isDialogMade = false;
};
} // namespace pictara
