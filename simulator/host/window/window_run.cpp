#include "simulator/host/window/window_run.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/bench_actions.h"
#include "simulator/host/window/dark_palette.h"
#include "simulator/host/window/host_window.h"

#include <QApplication>
#include <QBuffer>
#include <QDialog>
#include <QFileInfo>
#include <QPainter>
#include <QPixmap>

namespace pictara {
namespace {
constexpr quint64 kFramesBeforeScreenshot = 20; // the exposure has settled

// The window's clock delivers frames; the next one sees the interruption.
void closeWhenInterrupted(HostWindow& window, int* exitCode) {
    QObject::connect(&window, &HostWindow::frameShown, &window, [&window, exitCode] {
        if (!files::isInterrupted())
            return;
        *exitCode = kExitInterrupted;
        window.close();
    });
}

// Both windows where they stand, without what else is on the screen.
QImage picturedTogether(HostWindow& window) {
    QList<QWidget*> const windows =
        window.dialog() ? QList<QWidget*>{&window, window.dialog()} : QList<QWidget*>{&window};
    QRect bounds;
    for (QWidget const* part : windows)
        bounds |= part->geometry();
    qreal const ratio = window.devicePixelRatioF();
    QImage image(bounds.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::darkGray);
    QPainter painter(&image);
    for (QWidget* part : windows)
        painter.drawPixmap(part->geometry().topLeft() - bounds.topLeft(), part->grab());
    return image;
}

void takeScreenshotAndClose(HostWindow& window, QString const& file, int* exitCode) {
    QObject::connect(&window, &HostWindow::frameShown, &window, [&window, file, exitCode](quint64 number) {
        if (number != kFramesBeforeScreenshot)
            return;
        QByteArray const format = QFileInfo(file).suffix().toLatin1();
        QBuffer buffer;
        QString error = QStringLiteral("its name ends like no picture's");
        if (!buffer.open(QIODevice::WriteOnly) ||
            !picturedTogether(window).save(&buffer, format.constData()) ||
            !files::replace(file, buffer.data(), &error)) {
            complain(QStringLiteral("The screenshot %1 cannot be written: %2").arg(file, error));
            *exitCode = kExitUsage;
        }
        window.close();
    });
}
} // namespace

int runWindow(Session& session, Options const& options, QString* nextProfile) {
    if (options.dark) {
        QApplication::setStyle(QStringLiteral("Fusion")); // which takes all colours from the palette
        QApplication::setPalette(darkPalette());
    }
    HostWindow window(session, options);
    QString error;
    int code = kExitDone;
    if (!showParts(window, options.shownParts)) {
        complain(QStringLiteral("--show names a part that the window does not have."));
        code = kExitUsage;
    } else if (window.openDialog(&error)) {
        closeWhenInterrupted(window, &code);
        if (!options.screenshotFile.isEmpty())
            takeScreenshotAndClose(window, options.screenshotFile, &code);
        window.showWithDialog();
        QApplication::exec();
    } else {
        complain(error);
        code = kExitUsage;
    }
    *nextProfile = window.nextProfile();
    // The dialog is a child of the window, but the plug-in's to delete.
    session.closePlugin();
    return code;
}
} // namespace pictara
