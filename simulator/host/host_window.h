#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QTimer>

class QDialog;
class QLabel;

namespace pictara {

class LiveView;
class Session;
struct Options;

/// The host's main window: the live picture with the light panel at its side, and the plug-in's dialog as a
/// window of its own. While it is open, frames are delivered in real time. Closing it ends the program.
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

signals:
    void frameShown(quint64 number);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    [[nodiscard]] QWidget* newSidePanel();
    void bringDialogBack();
    void placeBeside();
    void onClock();
    void showStatus();

    Session& m_session;
    Options const& m_options;
    QPointer<QDialog> m_dialog; ///< the plug-in's
    LiveView* m_view;
    QLabel* m_status;
    QString m_toldBySolver;
    QTimer m_clock;
};

} // namespace pictara
