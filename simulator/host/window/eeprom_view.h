#pragma once

#include <QByteArray>
#include <QObject>

namespace simulator {
class SimulatedCamera;
}

namespace pictara {
namespace Ui {
class HostWindow;
}

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
