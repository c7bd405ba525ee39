#pragma once

#include "simulator/camera/simulated_camera.h"

#include <QObject>

namespace pictara {
class Session;
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
    void showLight();
    void changeLight();

    Ui::HostWindow const& m_ui;
    Session& m_session;
    simulator::Light m_light; ///< as it falls into the lens that is not covered
};

/// Shows the camera's EEPROM: its bytes, and the records that they make. Choosing a record chooses its bytes;
/// bytes that differ from those at the beginning are marked. It looks past the bus and disturbs nothing.
class EepromView : public QObject {
public:
    /// Borrows the window's form and the camera. What the EEPROM holds now is what changes are counted from.
    EepromView(Ui::HostWindow const& ui, simulator::SimulatedCamera const& camera);
    void refresh();

private:
    void chooseBytesOfRecord();
    void showMarks();

    Ui::HostWindow const& m_ui;
    simulator::SimulatedCamera const& m_camera;
    QByteArray m_bytes;         ///< that are shown
    QByteArray m_before;        ///< from which changes are counted
    int m_begin = 0, m_end = 0; ///< offsets of the chosen bytes
};
} // namespace pictara
