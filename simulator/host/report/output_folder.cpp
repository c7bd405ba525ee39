#include "simulator/host/report/output_folder.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/session/message_log.h"

#include <QBuffer>
#include <QFileInfo>

namespace pictara {
namespace {
QByteArray pngOf(QImage const& picture) {
    // Passed as the quality, which Qt takes as the compressor's effort: the less, the higher the number.
    // Sensor noise hardly compresses; the usual effort takes four times as long and saves nothing.
    constexpr int kEffort = 50;
    QBuffer buffer;
    (void)(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "PNG", kEffort));
    return buffer.data();
}
} // namespace

QString dataUri(QImage const& picture) {
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(pngOf(picture).toBase64());
}

void OutputFolder::savePicture(QString const& name, QImage const& picture) {
    saveBytes(name, pngOf(picture));
}

void OutputFolder::saveText(QString const& name, QString const& text) {
    QByteArray bytes = text.toUtf8();
#ifdef Q_OS_WIN
    bytes.replace('\n', "\r\n");
#endif
    saveBytes(name, bytes);
}

void OutputFolder::saveBytes(QString const& name, QByteArray const& bytes) {
    QString error = QStringLiteral("it would be empty");
    bool const saved = !bytes.isEmpty() && files::replace(pathOf(name), bytes, &error);
    if (saved)
        m_written.append(name);
    else
        complain(QStringLiteral("The file %1 cannot be written: %2").arg(m_folder.filePath(name), error));
    m_failed = m_failed || !saved;
}

bool OutputFolder::expect(QString const& name) {
    bool const there = QFileInfo(m_folder.filePath(name)).isFile();
    if (there)
        m_written.append(name);
    return there;
}

void OutputFolder::removeOthers(QStringList const& names) {
    for (QString const& name : names) {
        QString const path = m_folder.filePath(name);
        if (m_written.contains(name) || !QFileInfo(path).isFile() || QFile::remove(path))
            continue;
        complain(QStringLiteral("The file %1 of an earlier run cannot be removed.").arg(path));
        m_failed = true;
    }
}

QStringList OutputFolder::filesOfOthers(QString const& wildcard, QByteArray const& text) const {
    QStringList found;
    for (QString const& name : m_folder.entryList({wildcard}, QDir::Files, QDir::Name)) {
        QFile file(m_folder.filePath(name));
        constexpr qint64 kLookedAt = 1 << 20; // bytes
        if (!m_written.contains(name) && file.open(QIODevice::ReadOnly) &&
            file.read(kLookedAt).contains(text))
            found << name;
    }
    return found;
}
} // namespace pictara
