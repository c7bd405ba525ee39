#pragma once

#include "simulator/host/window/call_log.h"
#include "simulator/host/window/live_panel.h"

class QCheckBox;
class QLineEdit;
class QMenu;
class QTableView;

namespace pictara {
/// The log of calls as a table with its filter, to be saved as it is shown. Hidden, it follows nothing.
class CallPanel : public LivePanel {
public:
    /// Borrows the log.
    explicit CallPanel(CallLog& log, QWidget* parent = nullptr);
    void refresh(quint64 frame) override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    [[nodiscard]] QWidget* newFilterLine();
    void addKind(QMenu* menu, QString const& text, QString const& toolTip);
    void filter();
    void follow();
    void askAndSave();

    CallLog& m_log;
    QLineEdit* m_text;
    QMenu* m_kinds; ///< inputs first, then the sources in their order
    QCheckBox* m_follows;
    QTableView* m_table;
};
} // namespace pictara
