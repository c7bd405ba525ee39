#pragma once

#include "simulator/host/session/command_line.h"
#include "simulator/host/session/frame_delivery.h"
#include "simulator/host/session/service_desk.h"

#include <memory>

class QDialog;

namespace pictara {
/// The camera with light, lens and noise as asked for; null with a message for the user.
[[nodiscard]] std::unique_ptr<simulator::SimulatedCamera> openCamera(Options const& options, QString* error);
/// The absolute name of a folder that exists by now and takes files; empty with a message for the user.
[[nodiscard]] std::optional<QString> createdFolder(QString const& name, QString* error);

/// One sitting of the host: camera, registers, settings, services and plug-in, built from the ground up and
/// taken down from the top.
class Session {
public:
    /// The camera's EEPROM holds what its file does, or what the profile makes it when there is no file yet;
    /// for a replay the camera starts up from it. A fault that waits for an operation is planned. Null with a
    /// message for the user.
    [[nodiscard]] static std::unique_ptr<Session> open(Options const& options, QString* error);
    ~Session();

    /// Null with a message for the user when the plug-in makes no dialog. A parent outlives `closePlugin()`.
    [[nodiscard]] QDialog* openDialog(QWidget* parent, QString* error);
    /// Takes dialog, pages and plug-in away.
    void closePlugin();

    void setLight(simulator::Light const& light);
    /// Puts a lamp of that colour temperature, kelvin, before the camera; nothing else of the light changes.
    void bringLamp(double kelvin);
    /// Replaces the fault planned before; operations of the EEPROM count from now on, and none stands for the
    /// next one.
    void injectFault(FaultWish const& wish);
    /// Writes a register as the host's own register view does. False when the sensor does not take it.
    bool setRegister(QByteArray const& name, uint32_t value);

    /// Writes what the EEPROM holds by now to its file, when it has one. False with a message for the user;
    /// what the file held before is still in it then.
    [[nodiscard]] bool keepEeprom(QString* error) const;
    /// Empty when the EEPROM is not kept.
    [[nodiscard]] QString const& eepromFile() const { return m_eepromFile; }
    /// Register writes of a start-up from the EEPROM.
    [[nodiscard]] uint64_t replayedWrites() const { return m_replayedWrites; }

    [[nodiscard]] Options const& options() const { return m_options; }
    [[nodiscard]] simulator::SimulatedCamera& camera() { return *m_camera; }
    [[nodiscard]] SensorRegisters& registers() { return m_registers; }
    [[nodiscard]] FrameDelivery& frames() { return m_frames; }
    [[nodiscard]] StateVariables& states() { return m_states; }
    [[nodiscard]] ServiceDesk& desk() { return m_desk; }
    [[nodiscard]] QString const& outputFolder() const { return m_outputFolder; }

private:
    Session(std::unique_ptr<simulator::SimulatedCamera> camera, Options const& options,
            QString const& outputFolder, QString const& iniFile);
    [[nodiscard]] bool prepareEeprom(QString* error);

    // In the order in which they stand on one another.
    Options const m_options;
    std::unique_ptr<simulator::SimulatedCamera> m_camera;
    QString m_outputFolder;
    QString m_eepromFile;
    uint64_t m_replayedWrites = 0;
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
