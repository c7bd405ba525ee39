#include "simulator/host/window/host_window.h"

#include "simulator/host/report/block_report.h"
#include "simulator/host/session/dialog_setup.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/bench_actions.h"
#include "simulator/host/window/call_panel.h"
#include "simulator/host/window/eeprom_panel.h"
#include "simulator/host/window/histogram_panel.h"
#include "simulator/host/window/light_panel.h"
#include "simulator/host/window/live_view.h"
#include "simulator/host/window/sensor_panel.h"
#include "simulator/host/window/values_panel.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <algorithm>

namespace pictara {
namespace {
constexpr int kFrameIntervalMs = 66; // about 15 frames a second
// Left to the rest of the program after each frame, however long frames take.
constexpr int kShortestRestMs = 15;
constexpr int kMessageMs = 15'000;
constexpr int kGap = 10; // pixels between window and dialog
constexpr int kPreferredHeight = 1000;
constexpr int kTitleBar = 30; // about; the screen's system adds it
constexpr quint64 kFramesBetweenRefreshes = 4;

NamedValues::Values valuesOf(std::map<QByteArray, int32_t> const& variables) {
    NamedValues::Values values;
    for (auto const& [name, value] : variables)
        values[name] = QString::number(value);
    return values;
}

NamedValues::Values valuesOf(std::map<QByteArray, QByteArray> const& texts) {
    NamedValues::Values values;
    for (auto const& [name, text] : texts)
        values[name] = QString::fromLocal8Bit(text);
    return values;
}

QWidget* grouped(QString const& title, QWidget* content) {
    auto* const group = new QGroupBox(title);
    (new QVBoxLayout(group))->addWidget(content);
    return group;
}

// On a low screen the column scrolls; it is never narrower than what it holds.
QWidget* scrolled(QWidget* column) {
    auto* const area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(column);
    area->setMinimumWidth(column->sizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    area->setFocusPolicy(Qt::NoFocus);
    return area;
}
} // namespace

HostWindow::HostWindow(Session& session, Options const& options)
    : m_session(session), m_options(options), m_watching(m_log, options.pluginFile), m_view(new LiveView),
      m_parts(new QSplitter(Qt::Vertical)), m_tabs(new QTabWidget), m_scale(new QLabel), m_status(new QLabel),
      m_refusal(new QLabel) {
    setWindowTitle(QStringLiteral("Pictara - %1").arg(session.camera().description().profile));
    forgetSolverMessage(); // that of another sitting
    addPanelsBelow();
    setCentralWidget(newCentre());
    addMenus();
    addStatus();

    m_clock.setSingleShot(true);
    connect(&m_clock, &QTimer::timeout, this, &HostWindow::onClock);
}

QWidget* HostWindow::newCentre() {
    m_parts->setChildrenCollapsible(false);
    m_parts->addWidget(m_view);
    m_parts->addWidget(m_tabs);
    m_parts->setStretchFactor(0, 3);
    m_parts->setStretchFactor(1, 1);
    m_refusal->setObjectName(QStringLiteral("refusal"));
    m_refusal->setToolTip(QStringLiteral("Why the calibration library refused the last picture"));
    m_refusal->setWordWrap(true);
    m_refusal->hide();
    auto* const centre = new QWidget;
    auto* const layout = new QGridLayout(centre);
    layout->addWidget(m_parts, 0, 0);
    layout->addWidget(newSidePanel(), 0, 1);
    layout->addWidget(m_refusal, 1, 0, 1, 2);
    layout->setRowStretch(0, 1);
    layout->setColumnStretch(0, 1);
    return centre;
}

void HostWindow::addPanelsBelow() {
    auto const add = [this](char const* name, QString const& title, QString const& toolTip,
                            LivePanel* panel) {
        panel->setObjectName(QLatin1String(name));
        m_tabs->setTabToolTip(m_tabs->addTab(panel, title), toolTip);
        m_panels.push_back(panel);
        if (panel->tellsChanges())
            panel->refresh(0); // what is there before the dialog opens has not changed
    };
    add("calls", QStringLiteral("Calls"), QStringLiteral("Calls between host, plug-in and libraries"),
        new CallPanel(m_log));
    add("states", QStringLiteral("State variables"),
        QStringLiteral("The host's state variables; those that changed are bold"),
        new ValuesPanel(QStringLiteral("The host's state variables"),
                        [this] { return valuesOf(m_session.states().all()); }));
    add("settings", QStringLiteral("Settings"),
        QStringLiteral("What the plug-in keeps in the host's settings"),
        new ValuesPanel(QStringLiteral("The host's settings by their keys"),
                        [this] { return valuesOf(m_session.settings().all()); }));
    add("eeprom", QStringLiteral("EEPROM"), QStringLiteral("Bytes and records of the headboard's EEPROM"),
        new EepromPanel(m_session.camera()));
}

QWidget* HostWindow::newSidePanel() {
    auto* const sensor = new SensorPanel(m_session);
    connect(sensor, &SensorPanel::profileWished, this, [this](QString const& profile) {
        m_nextProfile = profile;
        close();
    });
    connect(sensor, &SensorPanel::told, this,
            [this](QString const& message) { statusBar()->showMessage(message, kMessageMs); });
    auto* const light = new LightPanel(m_session.camera().light());
    connect(light, &LightPanel::lightChanged, this,
            [this](simulator::Light const& changed) { m_session.setLight(changed); });
    auto* const histogram =
        new HistogramPanel([this]() -> QImage const& { return m_session.frames().picture(); });
    auto* const dialog = new QPushButton(QStringLiteral("Calibration &dialog"));
    dialog->setObjectName(QStringLiteral("dialog"));
    dialog->setToolTip(QStringLiteral("Open the plug-in's dialog, or bring it to the front"));
    connect(dialog, &QPushButton::clicked, this, &HostWindow::bringDialogBack);
    m_panels.push_back(sensor);
    m_panels.push_back(histogram);

    auto* const side = new QWidget;
    auto* const layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(grouped(QStringLiteral("Sensor"), sensor));
    layout->addWidget(grouped(QStringLiteral("Light"), light));
    layout->addWidget(grouped(QStringLiteral("Histogram"), histogram), 1);
    layout->addWidget(dialog);
    return scrolled(side);
}

void HostWindow::addMenus() {
    auto* const bar = new QToolBar(QStringLiteral("Picture"));
    bar->setMovable(false);
    addToolBar(bar);
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* const quit = file->addAction(QStringLiteral("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    quit->setToolTip(QStringLiteral("Close the dialog and end the program"));
    addBenchActions(*this, *m_view, *m_tabs, *menuBar()->addMenu(QStringLiteral("&View")), *bar);
    // The picture keeps its size without the bar's own menu, which would hide it.
    bar->toggleViewAction()->setVisible(false);
}

void HostWindow::addStatus() {
    simulator::CameraDescription const& camera = m_session.camera().description();
    statusBar()->addWidget(new QLabel(QStringLiteral("%1, %2 x %3")
                                          .arg(QString::fromLocal8Bit(camera.sensorName))
                                          .arg(camera.width)
                                          .arg(camera.height)));
    if (QStringList const unwatched = Watching::unwatched(); !unwatched.isEmpty())
        statusBar()->addWidget(
            new QLabel(QStringLiteral("Calls of %1 are not seen").arg(unwatched.join(QStringLiteral(", ")))));
    statusBar()->addPermanentWidget(m_scale);
    statusBar()->addPermanentWidget(m_status);
    m_scale->setToolTip(QStringLiteral("Size of the picture on the screen"));
    connect(m_view, &LiveView::scaleChanged, this, [this](double scale) {
        m_scale->setText(QStringLiteral("Size %1 %    ").arg(100 * scale, 0, 'f', 0));
    });
    m_status->setToolTip(
        QStringLiteral("Frames since the start, the sensor's exposure register, and the seed "
                       "of the camera's noise"));
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
    shareHeight();
    refreshPanels();
    m_clock.start(0);
    if (m_dialog)
        m_dialog->show();
}

void HostWindow::placeBeside() {
    QRect const room = screen()->availableGeometry().marginsRemoved({kGap, kGap, kGap, kGap});
    QSize const dialog = m_dialog ? m_dialog->size() : QSize(0, 0);
    QSize const wanted = sizeHint();
    int const width = std::min(wanted.width(), room.width() - dialog.width() - kGap);
    // The window does not go below its smallest size.
    resize(width, std::min(kPreferredHeight, room.height() - kTitleBar));
    move(room.topLeft());
    if (m_dialog)
        m_dialog->move(std::min(x() + this->width() + kGap, room.right() + 1 - dialog.width()), y());
}

// The picture gets the height of its proportions, what lies below it the rest.
void HostWindow::shareHeight() {
    simulator::CameraDescription const& camera = m_session.camera().description();
    int const picture = m_view->width() * int(camera.height) / std::max(1, int(camera.width));
    m_parts->setSizes({picture, std::max(1, m_parts->height() - m_parts->handleWidth() - picture)});
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
    forgetAtATry();
    frames.deliverNext();
    if (!frames.picture().isNull())
        m_view->setPicture(frames.picture());
    if (frames.frameNumber() % kFramesBetweenRefreshes == 0)
        refreshPanels();
    showStatus();
    showRefusal();
    emit frameShown(frames.frameNumber());
}

void HostWindow::refreshPanels() {
    FrameDelivery& frames = m_session.frames();
    for (LivePanel* const panel : m_panels)
        if (panel->isVisible() || panel->tellsChanges())
            panel->refresh(frames.frameNumber());
    if (m_view->isUniformityShown() && !frames.picture().isNull()) {
        auto const skipped = int(m_session.camera().description().unusableRows);
        m_view->setUniformity(measureBlocks(frames.light(), skipped), skipped);
    }
}

void HostWindow::showStatus() {
    FrameDelivery const& frames = m_session.frames();
    m_status->setText(QStringLiteral("Frame %1    Exposure %2    Seed %3")
                          .arg(frames.frameNumber())
                          .arg(frames.exposure())
                          .arg(m_session.seed()));
}

void HostWindow::forgetAtATry() {
    QString const status = DialogPage::find(m_dialog).text(kSteps[kCalibration].status);
    bool const isTrying = status.startsWith(QLatin1String("In progress"));
    if (isTrying && !m_isTrying)
        forgetSolverMessage();
    m_isTrying = isTrying;
}

// The dialog says only that a picture was refused; the library says why.
void HostWindow::showRefusal() {
    QString const status = DialogPage::find(m_dialog).text(kSteps[kCalibration].status);
    QString const told = lastSolverMessage();
    m_refusal->setText(QStringLiteral("Refused: ") + told);
    m_refusal->setVisible(!told.isEmpty() && status.startsWith(QLatin1String("Error")));
}

void HostWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    m_clock.stop();
    if (m_dialog)
        m_dialog->hide();
    QApplication::exit(kExitDone);
}
} // namespace pictara
