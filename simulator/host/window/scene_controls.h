#pragma once

#include "simulator/camera/simulated_camera.h"

#include <QObject>

namespace pictara {
class Session;
struct Quantity;
namespace Ui {
class HostWindow;
}

/// What a person does by hand: to the sensor's exposure, to its EEPROM, and to the light before the camera.
class SceneControls : public QObject {
public:
    /// Borrows the window's form and the session.
    SceneControls(Ui::HostWindow const& ui, Session& session);
    /// Shows exposure and its loop as they are by now, unless the person is about to set it.
    void refresh();

private:
    void connectSensor();
    void planFault();
    void connectLight();
    void connectQuantity(Quantity const& quantity);
    void showLight();
    void changeLight();

    Ui::HostWindow const& m_ui;
    Session& m_session;
    simulator::Light m_light; ///< as it falls into the lens that is not covered
};
} // namespace pictara
