#include "simulator/host/window/host_window.h"

#include "simulator/files/interruption.h"
#include "simulator/host/run/run_all.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/pictures/block_report.h"
#include "ui_host_window.h"

#include <QAbstractItemView>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QScreen>
#include <QScrollBar>
#include <QToolButton>
#include <algorithm>
#include <utility>

namespace pictara {
namespace {
constexpr int kFrameIntervalMs = 66; // about 15 frames a second
// Left to the rest of the program after each frame, however long frames take.
constexpr int kShortestRestMs = 15;
constexpr quint64 kFramesBetweenRefreshes = 4;
constexpr int kGap = 10; // pixels between window and dialog
constexpr QSize kPreferredSize(1270, 1000);
constexpr int kTitleBar = 30;                      // about; the screen's system adds it
constexpr int kCallWidths[] = {9, 10, 38, 48, 20}; // of the columns, in characters

std::unique_ptr<Ui::HostWindow> newForm(QMainWindow* window) {
    auto form = std::make_unique<Ui::HostWindow>();
    form->setupUi(window);
    return form;
}
} // namespace

HostWindow::HostWindow(Session& session)
    : m_session(session), m_ui(newForm(this)), m_watching(m_log, session.options().pluginFile),
      m_scene(*m_ui, session), m_eeprom(*m_ui, session.camera()), m_status(new QLabel) {
    simulator::CameraDescription const& camera = session.camera().description();
    setWindowTitle(QStringLiteral("Pictara - %1").arg(camera.profile));
    forgetSolverCause(); // that of another sitting
    // On a low screen the column scrolls; it is never narrower than what it holds by now.
    for (QLayout* const layout : m_ui->column->findChildren<QLayout*>())
        layout->invalidate();
    m_ui->side->setMinimumWidth(m_ui->column->sizeHint().width() +
                                m_ui->side->verticalScrollBar()->sizeHint().width());
    auto* const uniformity = new QToolButton;
    uniformity->setDefaultAction(m_ui->uniformity);
    m_ui->tabs->setCornerWidget(uniformity);
    connectCalls();
    statusBar()->addWidget(new QLabel(QStringLiteral("%1, %2 x %3")
                                          .arg(QString::fromLocal8Bit(camera.sensorName))
                                          .arg(camera.width)
                                          .arg(camera.height)));
    statusBar()->addPermanentWidget(m_status);
    m_status->setToolTip(QStringLiteral("Frames since the start, and the sensor's exposure register"));
    connect(m_ui->uniformity, &QAction::toggled, this, &HostWindow::refreshPanels);
    connect(m_ui->quit, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->dialog, &QPushButton::clicked, this, &HostWindow::bringDialogBack);
    m_clock.setSingleShot(true);
    connect(&m_clock, &QTimer::timeout, this, &HostWindow::onClock);
}

HostWindow::~HostWindow() = default;

void HostWindow::connectCalls() {
    m_ui->callTable->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // All rows are equally high without measuring each.
    m_ui->callTable->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_ui->callTable->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    m_shown.setSourceModel(&m_log);
    m_shown.setFilterKeyColumn(-1); // any
    m_shown.setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_ui->callTable->setModel(&m_shown);
    for (int column = 0; column < CallLog::kColumnCount; ++column)
        m_ui->callTable->setColumnWidth(column, kCallWidths[column] * fontMetrics().averageCharWidth());
    connect(m_ui->callText, &QLineEdit::textChanged, this, &HostWindow::filterCalls);
    connect(m_ui->follows, &QCheckBox::toggled, this, &HostWindow::refreshPanels);
    connect(m_ui->clear, &QAction::triggered, this, [this] { m_log.clear(); });
    connect(m_ui->save, &QAction::triggered, this, &HostWindow::askAndSaveCalls);
    connect(m_ui->tabs, &QTabWidget::currentChanged, this, &HostWindow::refreshPanels);
}

bool HostWindow::openDialog(QString* error) {
    m_dialog = m_session.openDialog(this, error);
    if (!m_dialog)
        return false;
    DialogPage::find(m_dialog).prepare(m_session);
    return true;
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
    QRect const room = screen()->availableGeometry().marginsRemoved({kGap, kGap, kGap, kGap});
    int const dialogWidth = m_dialog ? m_dialog->width() : 0;
    // The window does not go below its smallest size.
    resize(std::min(kPreferredSize.width(), room.width() - dialogWidth - kGap),
           std::min(kPreferredSize.height(), room.height() - kTitleBar));
    move(room.topLeft());
    show();
    // The picture gets the height of its proportions, what lies below it the rest.
    simulator::CameraDescription const& camera = m_session.camera().description();
    int const picture = m_ui->view->width() * int(camera.height) / std::max(1, int(camera.width));
    int const rest = m_ui->parts->height() - m_ui->parts->handleWidth() - picture;
    m_ui->parts->setSizes({picture, std::max(1, rest)});
    refreshPanels();
    m_clock.start(0);
    if (!m_dialog)
        return;
    m_dialog->move(std::min(x() + width() + kGap, room.right() + 1 - dialogWidth), y());
    m_dialog->show();
}

void HostWindow::onClock() {
    if (files::isInterrupted()) {
        close();
        return;
    }
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
        m_ui->view->setPicture(frames.picture());
    if (frames.frameNumber() % kFramesBetweenRefreshes == 0)
        refreshPanels();
    m_status->setText(
        QStringLiteral("Frame %1    Exposure %2").arg(frames.frameNumber()).arg(frames.exposure()));
    tellRefusal();
}

void HostWindow::refreshPanels() {
    FrameDelivery& frames = m_session.frames();
    m_scene.refresh();
    m_log.tell();
    if (m_ui->eeprom->isVisible())
        m_eeprom.refresh();
    if (m_ui->calls->isVisible() && m_ui->follows->isChecked())
        m_ui->callTable->scrollToBottom();
    m_ui->view->setUniformity(m_ui->uniformity->isChecked() ? frames.blocks() : BlockReport());
}

void HostWindow::filterCalls(QString const& text) {
    m_shown.setFilterFixedString(text);
    refreshPanels();
}

void HostWindow::askAndSaveCalls() {
    QString const title = QStringLiteral("Save the calls");
    QString const file = QFileDialog::getSaveFileName(this, title, QStringLiteral("calls.txt"));
    QString error;
    if (!file.isEmpty() && !saveCalls(m_shown, file, &error))
        QMessageBox::warning(this, title, error);
}

// The dialog says only that a picture was refused; the library says why.
void HostWindow::tellRefusal() {
    QString const status = DialogPage::find(m_dialog).text(kSteps[kCalibration].status);
    bool const isTrying = isInProgress(status);
    if (!std::exchange(m_isTrying, isTrying) && isTrying)
        forgetSolverCause();
    QString const told = lastSolverCause().text;
    m_ui->refusal->setText(QStringLiteral("Refused: ") + told);
    m_ui->refusal->setVisible(!told.isEmpty() && status.startsWith(QLatin1String("Error")));
}

void HostWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    m_clock.stop();
    if (m_dialog)
        m_dialog->hide();
    QApplication::exit(kExitDone);
}

std::optional<QString> askForProfile(QString const& preferred) {
    QStringList const names = simulator::SimulatedCamera::profileNames();
    QStringList const lines = simulator::SimulatedCamera::notedProfileNames(); // in the same order
    QInputDialog dialog;
    dialog.setWindowTitle(QStringLiteral("Pictara - sensor"));
    dialog.setLabelText(QStringLiteral("Sensor on the headboard:"));
    dialog.setOption(QInputDialog::UseListViewForComboBoxItems);
    dialog.setComboBoxItems(lines);
    dialog.setTextValue(lines.value(std::max(0, names.indexOf(preferred))));
    dialog.setOkButtonText(QStringLiteral("Open"));
    dialog.resize(640, 480);
    if (auto* const list = dialog.findChild<QAbstractItemView*>())
        QObject::connect(list, &QAbstractItemView::activated, &dialog, &QDialog::accept);
    int const chosen = dialog.exec() == QDialog::Accepted ? lines.indexOf(dialog.textValue()) : -1;
    return chosen >= 0 ? std::optional(names[chosen]) : std::nullopt;
}

int runWindow(Session& session) {
    HostWindow window(session);
    QString error;
    bool const isOpen = window.openDialog(&error);
    if (isOpen) {
        window.showWithDialog();
        QApplication::exec();
    } else {
        complain(error);
    }
    // The dialog is a child of the window, but the plug-in's to delete.
    session.closePlugin();
    return !isOpen ? kExitUsage : files::isInterrupted() ? kExitInterrupted : kExitDone;
}
} // namespace pictara
