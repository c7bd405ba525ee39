#pragma once

#include "simulator/host/session/command_line.h"
#include "simulator/host/window/call_log.h"
#include "simulator/host/window/panels.h"

#include <QDialog>
#include <QMainWindow>
#include <QPointer>
#include <QSortFilterProxyModel>
#include <QTimer>
#include <memory>
#include <optional>

namespace pictara {
/// The host's main window, a bench: the live picture, sensor and light at its side, and below it calls and
/// the EEPROM; the plug-in's dialog is a window of its own. While it is open, frames are delivered in real
/// time. Closing it, or an interruption of the program, ends the event loop.
class HostWindow : public QMainWindow {
public:
    /// The session outlives the window; its plug-in is closed before the window goes.
    explicit HostWindow(Session& session);
    ~HostWindow() override;

    /// Opens the plug-in's dialog set up as the options say. False with a message when it makes none.
    [[nodiscard]] bool openDialog(QString* error);
    /// Shows the window and, beside it, the dialog, both on the screen if they fit.
    void showWithDialog();
    [[nodiscard]] QDialog* dialog() const { return m_dialog; }
    /// Delivers the next frame and shows it; the window's own clock does so about 15 times a second.
    void deliverFrame();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void connectCalls();
    void connectPicture();
    void bringDialogBack();
    [[nodiscard]] QRect room() const; ///< on the screen, for windows without their frames
    void onClock();
    void refreshPanels();
    void showPicture();
    void askAndSave(QAction const* action, char const* ending, QByteArray const& contents);
    void tellRefusal();

    Session& m_session;
    std::unique_ptr<Ui::HostWindow> const m_ui;
    CallLog m_log;
    QSortFilterProxyModel m_shown; ///< the lines in which the filter's text occurs
    Watching m_watching;
    SceneControls m_scene;
    EepromView m_eeprom;
    QPointer<QDialog> m_dialog; ///< the plug-in's
    bool m_isTrying = false;
    std::optional<int> m_row; ///< of the profile; none: the middle one
    QTimer m_clock;
};

/// Asks the person for one of the installed sensors; `preferred` is chosen at first. None when the person
/// wants none.
[[nodiscard]] std::optional<QString> askForProfile(QString const& preferred);

/// Shows the bench and the dialog until the person closes the window or interrupts the program. Returns the
/// program's exit code.
[[nodiscard]] int runWindow(Session& session);
} // namespace pictara
