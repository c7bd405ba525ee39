#pragma once

#include "tools/window_picture/window_picture.h"

#include <QDir>
#include <QWidget>
#include <cstdio>

/// Writes what windows show as NAME.png and tells so.
[[nodiscard]] inline bool writeNamedPicture(QList<QWidget*> const& windows, QDir const& folder,
                                            char const* name) {
    QString const file = folder.filePath(QLatin1String(name) + QStringLiteral(".png"));
    QString error;
    bool const written = files::savePicture(windows, file, &error);
    std::printf("%s %s %s\n", written ? "wrote" : "could not write", qUtf8Printable(file),
                qUtf8Printable(error));
    return written;
}
