#include "simulator/host/report/output_folder.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/report/charts.h"
#include "simulator/host/session/message_log.h"

#include <QFileInfo>

namespace pictara {
void OutputFolder::savePicture(QString const& name, QImage const& picture) {
    saveBytes(name, pngOf(picture));
}

void OutputFolder::saveBytes(QString const& name, QByteArray const& bytes) {
    QString error = QStringLiteral("%1 would be empty").arg(pathOf(name));
    bool const saved = !bytes.isEmpty() && files::replace(pathOf(name), bytes, &error);
    if (saved)
        m_written.append(name);
    else
        complain(error);
    m_failed = m_failed || !saved;
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
} // namespace pictara
