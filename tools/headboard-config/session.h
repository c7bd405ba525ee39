#pragma once

#include "config_page/config.h"
#include "simulator/camera/simulated_camera.h"
#include "tools/headboard-config/camera_services.h"
#include "tools/headboard-config/command_line.h"
#include "wizard/wizard.h"

#include <QWidget>
#include <memory>

/// A camera with its headboard, and the configuration page on it in a window.
class Session {
public:
    /// Null with a message for the user in `error`. The page is not initialised yet.
    [[nodiscard]] static std::unique_ptr<Session> open(Options const& options, QString* error);
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    [[nodiscard]] simulator::SimulatedCamera& camera() { return *m_camera; }
    [[nodiscard]] QWidget& window() { return m_window; }
    [[nodiscard]] Config& page() { return *m_page; }

    /// Writes the EEPROM's file; a camera without an EEPROM has nothing to keep.
    [[nodiscard]] bool saveEeprom(QString* error) const;

private:
    Session(std::unique_ptr<simulator::SimulatedCamera> camera, Options const& options);

    std::unique_ptr<simulator::SimulatedCamera> const m_camera;
    QString const m_eepromFile;
    CameraServices m_services;
    Wizard m_bullets; ///< never shown: it only owns the pictures
    kestra::EepromSlot m_eeprom = nullptr;
    QWidget m_window;
    Config* m_page; ///< the window's
};
