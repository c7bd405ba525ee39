#pragma once

#include <QList>
#include <QString>

class QWidget;

namespace files {
/// Saves what windows show, each where it stands among the others, without what else is on the screen. The
/// end of the file's name tells the format. False, with the reason in `error`, when the file is the old one.
[[nodiscard]] bool savePicture(QList<QWidget*> const& windows, QString const& name, QString* error);
} // namespace files
