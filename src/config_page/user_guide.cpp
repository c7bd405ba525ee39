#include "config_page/user_guide.h"

#include "common/libraries.h"

#include <QCoreApplication>
#include <QFile>

QString userGuidePath() {
    QString const home = QFile::decodeName(veyra2().vy_Home()); // null gives an empty text
    // Two slashes each: so the path is shown to the user when it cannot be opened.
    return (home.isEmpty() ? QCoreApplication::applicationDirPath() : home) +
           QStringLiteral("//doc//User Guides//Manufacturing Settings Tool User Guide.pdf");
}

QUrl userGuideUrl(QString const& path) {
    return QUrl(QStringLiteral("file:///") + QString::fromLatin1(QUrl::toPercentEncoding(path, "/:")));
}
