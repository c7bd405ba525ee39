#pragma once

#include "simulator/host/command_line.h"
#include "simulator/host/frame_delivery.h"
#include "simulator/host/service_desk.h"

#include <memory>

class QDialog;

namespace pictara {

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

    [[nodiscard]] simulator::SimulatedCamera& camera() { return *m_camera; }
    [[nodiscard]] FrameDelivery& frames() { return m_frames; }
    [[nodiscard]] ServiceDesk const& desk() const { return m_desk; }
    [[nodiscard]] QString const& outputFolder() const { return m_outputFolder; }

private:
    Session(std::unique_ptr<simulator::SimulatedCamera> camera, QString const& outputFolder,
            QString const& iniFile, QString const& settingsFile);

    // In the order in which they stand on one another.
    std::unique_ptr<simulator::SimulatedCamera> m_camera;
    QString m_outputFolder;
    StateVariables m_states;
    SettingsStore m_settings;
    PluginLibrary m_plugin;
    SensorRegisters m_registers;
    ServiceDesk m_desk;
    FrameDelivery m_frames;
    SensorRecord m_sensor{};
};

} // namespace pictara
