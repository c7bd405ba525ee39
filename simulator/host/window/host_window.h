#pragma once

#include "simulator/boundary/boundary.h"
#include "simulator/host/window/call_log.h"

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <vector>

class QDialog;
class QLabel;
class QSplitter;
class QTabWidget;

namespace pictara {
class LivePanel;
class LiveView;
class Session;
struct Options;

/// The host's main window, a bench: the live picture, sensor and light at its side, and below it calls, state
/// variables, settings and the EEPROM; the plug-in's dialog is a window of its own. While it is open, frames
/// are delivered in real time. Closing it ends the program.
class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    /// The session outlives the window; its plug-in is closed before the window goes.
    HostWindow(Session& session, Options const& options);

    /// Opens the plug-in's dialog set up as the options say. False with a message when it makes none.
    [[nodiscard]] bool openDialog(QString* error);
    /// Shows the window and, beside it, the dialog, both on the screen if they fit.
    void showWithDialog();
    [[nodiscard]] QDialog* dialog() const { return m_dialog; }
    /// Delivers the next frame and shows it; the window's own clock does so about 15 times a second.
    void deliverFrame();
    /// The sensor for which the person closed the window; empty when that was the end.
    [[nodiscard]] QString const& nextProfile() const { return m_nextProfile; }

signals:
    void frameShown(quint64 number);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    [[nodiscard]] QWidget* newCentre();
    [[nodiscard]] QWidget* newSidePanel();
    void addPanelsBelow();
    void addMenus();
    void addStatus();
    void bringDialogBack();
    void placeBeside();
    void shareHeight();
    void onClock();
    void refreshPanels();
    void showStatus();
    void forgetAtATry();
    void showRefusal();

    Session& m_session;
    Options const& m_options;
    CallLog m_log;
    Watching m_watching;
    QPointer<QDialog> m_dialog; ///< the plug-in's
    LiveView* m_view;
    QSplitter* m_parts; ///< picture and tabs
    QTabWidget* m_tabs;
    QLabel* m_scale;
    QLabel* m_status;
    QLabel* m_refusal; ///< why the library refused the last picture
    std::vector<LivePanel*> m_panels;
    QString m_nextProfile;
    bool m_isTrying = false;
    QTimer m_clock;
};
} // namespace pictara
