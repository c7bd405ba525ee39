#include "simulator/host/host_window.h"

#include "simulator/host/dialog_setup.h"
#include "simulator/host/light_panel.h"
#include "simulator/host/live_view.h"
#include "simulator/host/message_log.h"
#include "simulator/host/session.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <algorithm>

namespace pictara {
namespace {

constexpr int kFrameIntervalMs = 66; // about 15 frames a second
// Left to the rest of the program after each frame, however long frames take.
constexpr int kShortestRestMs = 15;
constexpr int kMessageMs = 15'000;
constexpr int kGap = 10; // pixels between window and dialog

} // namespace

HostWindow::HostWindow(Session& session, Options const& options)
    : m_session(session), m_options(options), m_view(new LiveView), m_status(new QLabel) {
    simulator::CameraDescription const& camera = session.camera().description();
    setWindowTitle(QStringLiteral("Pictara - %1").arg(camera.profile));
    auto* const centre = new QWidget;
    auto* const layout = new QHBoxLayout(centre);
    layout->addWidget(m_view, 1);
    layout->addWidget(newSidePanel());
    setCentralWidget(centre);

    statusBar()->addWidget(new QLabel(QStringLiteral("%1, %2 x %3")
                                          .arg(QString::fromLocal8Bit(camera.sensorName))
                                          .arg(camera.width)
                                          .arg(camera.height)));
    statusBar()->addPermanentWidget(m_status);
    m_status->setToolTip(
        QStringLiteral("Frames since the start, the sensor's exposure register, and the seed "
                       "of the camera's noise"));

    auto* const quit = new QAction(QStringLiteral("Quit"), this);
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);
    addAction(quit);

    m_clock.setSingleShot(true);
    connect(&m_clock, &QTimer::timeout, this, &HostWindow::onClock);
}

QWidget* HostWindow::newSidePanel() {
    auto* const side = new QWidget;
    auto* const layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* const light = new QGroupBox(QStringLiteral("Light"));
    auto* const panel = new LightPanel(m_session.camera().light());
    (new QVBoxLayout(light))->addWidget(panel);
    connect(panel, &LightPanel::lightChanged, this,
            [this](simulator::Light const& changed) { m_session.setLight(changed); });
    layout->addWidget(light);

    layout->addStretch();
    auto* const dialog = new QPushButton(QStringLiteral("Calibration &dialog"));
    dialog->setObjectName(QStringLiteral("dialog"));
    dialog->setToolTip(QStringLiteral("Open the plug-in's dialog, or bring it to the front"));
    connect(dialog, &QPushButton::clicked, this, &HostWindow::bringDialogBack);
    layout->addWidget(dialog);
    return side;
}

bool HostWindow::openDialog(QString* error) {
    m_dialog = m_session.openDialog(this, error);
    if (!m_dialog)
        return false;
    DialogPage page = DialogPage::find(m_dialog);
    return !page || setUpDialog(page, m_options, m_session.outputFolder(), error);
}

void HostWindow::bringDialogBack() {
    QString error;
    // A plug-in is free to delete a dialog that was closed.
    if (!m_dialog && !openDialog(&error)) {
        statusBar()->showMessage(error);
        return;
    }
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void HostWindow::showWithDialog() {
    placeBeside();
    show();
    m_clock.start(0);
    if (m_dialog)
        m_dialog->show();
}

void HostWindow::placeBeside() {
    QRect const room = screen()->availableGeometry().marginsRemoved({kGap, kGap, kGap, kGap});
    QSize const dialog = m_dialog ? m_dialog->size() : QSize(0, 0);
    QSize const wanted = sizeHint();
    int const width = std::min(wanted.width(), room.width() - dialog.width() - kGap);
    // Of a narrower picture in its proportions; the window does not go below its smallest size.
    resize(width, wanted.height() - (wanted.width() - width) * 9 / 16);
    move(room.topLeft());
    if (m_dialog)
        m_dialog->move(std::min(x() + this->width() + kGap, room.right() + 1 - dialog.width()), y());
}

void HostWindow::onClock() {
    QElapsedTimer timer;
    timer.start();
    deliverFrame();
    // Closed by what came of the frame: then the clock stays still.
    if (isVisible())
        m_clock.start(std::max(kShortestRestMs, kFrameIntervalMs - int(timer.elapsed())));
}

void HostWindow::deliverFrame() {
    FrameDelivery& frames = m_session.frames();
    frames.deliverNext();
    if (!frames.picture().isNull())
        m_view->setPicture(frames.picture());
    showStatus();
    emit frameShown(frames.frameNumber());
}

void HostWindow::showStatus() {
    FrameDelivery const& frames = m_session.frames();
    m_status->setText(QStringLiteral("Frame %1    Exposure %2    Seed %3")
                          .arg(frames.frameNumber())
                          .arg(frames.exposure())
                          .arg(m_options.seed));
    // The dialog says only that a picture was refused; the library says why.
    if (QString const told = lastSolverMessage(); told != m_toldBySolver) {
        m_toldBySolver = told;
        statusBar()->showMessage(told, kMessageMs);
    }
}

void HostWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    m_clock.stop();
    if (m_dialog)
        m_dialog->hide();
    QApplication::exit(kExitDone);
}

} // namespace pictara
