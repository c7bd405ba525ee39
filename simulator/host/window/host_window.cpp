#include "simulator/host/window/host_window.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/charts.h"
#include "simulator/host/run/runs.h"
#include "simulator/host/run/verdict.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/pictures/frame_readings.h"
#include "ui_host_window.h"

#include <QAbstractItemView>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolBar>
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
      m_scene(*m_ui, session), m_eeprom(*m_ui, session.camera()) {
    simulator::CameraDescription const& camera = session.camera().description();
    setWindowTitle(QStringLiteral("Pictara - %1, %2 x %3")
                       .arg(camera.profile, QString::number(camera.width), QString::number(camera.height)));
    forgetSolverCause(); // that of another sitting
    // On a low screen the column scrolls; it is never narrower than what it holds by now.
    for (QLayout* const layout : m_ui->column->findChildren<QLayout*>())
        layout->invalidate();
    m_ui->side->setMinimumWidth(m_ui->column->sizeHint().width() +
                                m_ui->side->verticalScrollBar()->sizeHint().width());
    auto* const views = new QToolBar;
    views->addActions({m_ui->profile, m_ui->clipping, m_ui->uniformity});
    m_ui->tabs->setCornerWidget(views);
    connectCalls();
    connectPicture();
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
    connect(m_ui->callText, &QLineEdit::textChanged, &m_shown, &QSortFilterProxyModel::setFilterFixedString);
    connect(m_ui->callText, &QLineEdit::textChanged, this, &HostWindow::refreshPanels);
    connect(m_ui->clear, &QAction::triggered, this, [this] { m_log.clear(); });
    connect(m_ui->tabs, &QTabWidget::currentChanged, this, &HostWindow::refreshPanels);
}

void HostWindow::connectPicture() {
    connect(m_ui->uniformity, &QAction::toggled, this, &HostWindow::refreshPanels);
    connect(m_ui->view, &LiveView::rowChosen, this, [this](int row) {
        m_row = row;
        m_ui->diagonal->setChecked(false);
    });
    m_session.desk().onGraph = [this] { m_ui->profile->setChecked(true); };
    auto const connectSave = [this](QAction* action, char const* ending, auto contents) {
        connect(action, &QAction::triggered, this, [=, this] { askAndSave(action, ending, contents()); });
    };
    connectSave(m_ui->save, "calls.txt", [this] { return callsText(m_shown); });
    connectSave(m_ui->saveCertificate, "certificate.html", [this] {
        m_clock.stop(); // frames come by the measurement
        QApplication::setOverrideCursor(Qt::WaitCursor);
        QByteArray page = sittingPage(m_session, DialogPage::find(m_dialog));
        QApplication::restoreOverrideCursor();
        m_clock.start(0);
        return page;
    });
    connectSave(m_ui->savePicture, "picture.png",
                [this] { return pngOf(m_session.frames().unmarkedPicture()); });
    m_ui->saveRaw->setEnabled(m_session.camera().description().rawType != simulator::FrameType::Ycbcr);
    connectSave(m_ui->saveRaw, "raw.png", [this] { return pngOf(rawPicture(m_session.frames().frame())); });
}

bool HostWindow::openDialog(QString* error) {
    m_dialog = m_session.openDialog(this, error);
    if (!m_dialog)
        return false;
    if (m_dialog->height() > room().height()) { // it keeps its size, and the layout for it, and scrolls
        auto* const frame = new QScrollArea(this);
        frame->setWindowFlags(Qt::Dialog);
        // Copied, as a literal goes with the plug-in's library.
        frame->setWindowTitle(QString::fromUtf8(m_dialog->windowTitle().toUtf8()));
        frame->setFrameShape(QFrame::NoFrame);
        frame->resize(m_dialog->width() + frame->verticalScrollBar()->sizeHint().width(), room().height());
        frame->setWidget(m_dialog);
        m_dialog->move(0, 0); // else it places itself in the middle when it is shown
        connect(m_dialog, &QDialog::finished, frame, &QWidget::hide);
        connect(m_dialog, &QObject::destroyed, frame, &QObject::deleteLater);
    }
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
    m_dialog->window()->show();
    m_dialog->window()->raise();
    m_dialog->window()->activateWindow();
}

QRect HostWindow::room() const {
    return screen()->availableGeometry().marginsRemoved({kGap, kGap, kGap, kGap + kTitleBar});
}

void HostWindow::showWithDialog() {
    int const dialogWidth = m_dialog ? m_dialog->window()->width() : 0;
    // The window does not go below its smallest size.
    resize(std::min(kPreferredSize.width(), room().width() - dialogWidth - kGap),
           std::min(kPreferredSize.height(), room().height()));
    move(room().topLeft());
    show();
    // The picture gets the height of its proportions, what lies below it the rest.
    simulator::CameraDescription const& camera = m_session.camera().description();
    int const picture = m_ui->picture->height() - m_ui->view->height() +
                        m_ui->view->width() * int(camera.height) / std::max(1, int(camera.width));
    int const rest = m_ui->parts->height() - m_ui->parts->handleWidth() - picture;
    m_ui->parts->setSizes({picture, 1, std::max(1, rest)});
    std::vector<CaptureRow> const lamps = captureRows(DialogPage::find(m_dialog));
    if (!lamps.empty() && lamps.front().kelvin > 0 && !m_session.options().lightKelvin)
        m_ui->temperature->setValue(lamps.front().kelvin);
    refreshPanels();
    m_clock.start(0);
    if (!m_dialog)
        return;
    m_dialog->window()->move(std::min(x() + width() + kGap, room().right() + 1 - dialogWidth), y());
    bringDialogBack();
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
        showPicture();
    if (frames.frameNumber() % kFramesBetweenRefreshes == 0)
        refreshPanels();
    tellRefusal();
}

void HostWindow::showPicture() {
    FrameDelivery const& frames = m_session.frames();
    simulator::CameraDescription const& camera = m_session.camera().description();
    QImage const& picture = frames.picture();
    QImage shown = picture.copy();
    if (m_ui->clipping->isChecked())
        m_ui->clipped->setText(
            QString::asprintf("Clipped %.2f %%", markClipped(frames.frame(), camera, picture, shown)));
    shown = markedRefusal(shown, lastSolverCause().blocks, camera.orientation);
    if (m_ui->profile->isChecked()) {
        int const row = m_row.value_or(shown.height() / 2);
        QLine const line = m_ui->diagonal->isChecked() ? QLine(QPoint(), shown.rect().bottomRight())
                                                       : QLine(0, row, shown.width() - 1, row);
        m_ui->chart->setPixmap(
            profileChart(profileAlong(line, frames.frame(), camera, frames.settings()), *m_ui->chart));
        QPainter painter(&shown);
        painter.setPen(QPen(Qt::cyan, std::max(1, shown.width() / 480)));
        painter.drawLine(line);
    }
    m_ui->view->setPicture(shown);
    auto const place = m_ui->view->pointed();
    m_ui->pixel->setText(place ? pixelText(*place, frames.frame(), camera, picture) : QString());
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

void HostWindow::askAndSave(QAction const* action, char const* ending, QByteArray const& contents) {
    QString const title = action->iconText(); // without marks for keys and menus
    QString const name = m_session.camera().description().profile + '-' +
                         QString::number(m_session.frames().frameNumber()) + '-' + ending;
    QString const file =
        QFileDialog::getSaveFileName(this, title, QDir(m_session.outputFolder()).filePath(name));
    QString error;
    if (!file.isEmpty() && !files::replace(file, contents, &error))
        QMessageBox::warning(this, title, error);
}

// The dialog says only that a picture was refused; the library says why.
void HostWindow::tellRefusal() {
    bool const isTrying = isInProgress(DialogPage::find(m_dialog).text(kSteps[kCalibration].status));
    if (!std::exchange(m_isTrying, isTrying) && isTrying)
        forgetSolverCause();
    QString const told = lastSolverCause().text;
    m_ui->refusal->setText(QStringLiteral("Refused: ") + told);
    m_ui->refusal->setVisible(!told.isEmpty());
}

void HostWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    m_clock.stop();
    if (m_dialog)
        m_dialog->window()->hide();
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
