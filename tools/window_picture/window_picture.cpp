#include "tools/window_picture/window_picture.h"

#include "simulator/files/whole_file.h"

#include <QBuffer>
#include <QFileInfo>
#include <QPainter>
#include <QWidget>

namespace files {
namespace {
QImage pictured(QList<QWidget*> const& windows) {
    QRect bounds;
    for (QWidget const* window : windows)
        bounds |= window->geometry();
    qreal const ratio = windows.first()->devicePixelRatioF();
    QImage image(bounds.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::darkGray);
    QPainter painter(&image);
    for (QWidget* const window : windows)
        painter.drawPixmap(window->geometry().topLeft() - bounds.topLeft(), window->grab());
    return image;
}
} // namespace

bool savePicture(QList<QWidget*> const& windows, QString const& name, QString* error) {
    QBuffer buffer;
    if (buffer.open(QIODevice::WriteOnly) &&
        pictured(windows).save(&buffer, QFileInfo(name).suffix().toLatin1().constData()))
        return replace(name, buffer.data(), error);
    *error = QStringLiteral("its name ends like no picture's");
    return false;
}
} // namespace files
