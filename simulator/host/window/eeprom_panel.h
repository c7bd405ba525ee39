#pragma once

#include "simulator/host/window/eeprom_bytes_table.h"
#include "simulator/host/window/live_panel.h"

class QLabel;
class QTableView;
class QTreeWidget;

namespace simulator {
class SimulatedCamera;
}

namespace pictara {
/// The camera's EEPROM: its bytes, and the records that they make. Choosing a record chooses its bytes. It
/// looks past the bus and disturbs nothing.
class EepromPanel : public LivePanel {
public:
    /// Borrows the camera.
    explicit EepromPanel(simulator::SimulatedCamera const& camera, QWidget* parent = nullptr);
    void refresh(quint64 frame) override;
    [[nodiscard]] bool tellsChanges() const override { return true; }

private:
    [[nodiscard]] QWidget* newByteTable();
    [[nodiscard]] QWidget* newRecordTree();
    [[nodiscard]] QWidget* newStateLine();
    void listRecords();
    void chooseBytesOfRecord();
    void tellState();

    simulator::SimulatedCamera const& m_camera;
    EepromBytesTable m_bytes;
    QTableView* m_table;
    QTreeWidget* m_records;
    QLabel* m_state;
};
} // namespace pictara
