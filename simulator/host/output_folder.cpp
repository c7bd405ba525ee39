#include "simulator/host/output_folder.h"

#include "simulator/host/message_log.h"
#include "simulator/host/png_effort.h"

#include <QFileInfo>
#include <QSaveFile>

namespace pictara {

void OutputFolder::savePicture(QString const& name, QImage const& picture) {
    QSaveFile file(m_folder.filePath(name));
    note(name, file.open(QIODevice::WriteOnly) && picture.save(&file, "PNG", kPngEffort) && file.commit());
}

void OutputFolder::saveText(QString const& name, QString const& text) {
    QSaveFile file(m_folder.filePath(name));
    note(name, file.open(QIODevice::WriteOnly | QIODevice::Text) && file.write(text.toUtf8()) >= 0 &&
                   file.commit());
}

void OutputFolder::saveBytes(QString const& name, QByteArray const& bytes) {
    QSaveFile file(m_folder.filePath(name));
    note(name, file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit());
}

bool OutputFolder::expect(QString const& name) {
    bool const there = QFileInfo(m_folder.filePath(name)).isFile();
    if (there)
        m_written.append(name);
    return there;
}

void OutputFolder::note(QString const& name, bool saved) {
    if (saved)
        m_written.append(name);
    else
        complain(QStringLiteral("The file %1 cannot be written.").arg(m_folder.filePath(name)));
    m_failed = m_failed || !saved;
}

} // namespace pictara
