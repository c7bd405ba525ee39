#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QSaveFile>

namespace files {
namespace {
bool isOtherThanAFile(QString const& name, QString* error) {
    QFileInfo const info(name);
    bool const isOther = info.exists() && !info.isFile();
    if (isOther)
        *error = QStringLiteral("it is no regular file");
    return isOther;
}
} // namespace

std::optional<QByteArray> read(QString const& name, qint64 most, QString* error) {
    if (isOtherThanAFile(name, error))
        return std::nullopt;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return std::nullopt;
    }
    // Asked first, so that not even the bound is read of a file that is far too large; some tell a size of 0.
    QByteArray bytes = file.size() <= most ? file.read(most + 1) : QByteArray();
    if (file.error() != QFileDevice::NoError)
        *error = file.errorString();
    else if (file.size() > most || bytes.size() > most)
        *error = QStringLiteral("it has more than %1 bytes").arg(most);
    else
        return bytes;
    return std::nullopt;
}

bool isReplaceable(QString const& name, QString* error) {
    if (isOtherThanAFile(name, error))
        return false;
    QFileInfo const folder(QFileInfo(name).absolutePath());
    bool const hasPlace = folder.isDir() && folder.isWritable();
    if (!hasPlace)
        *error = QStringLiteral("its folder takes no files");
    return hasPlace;
}

bool replace(QString const& name, QByteArray const& contents, QString* error) {
    if (isOtherThanAFile(name, error))
        return false;
    QSaveFile file(name);
    // Flushed here, because a commit does not notice when what is still buffered cannot be written.
    if (file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.flush() &&
        file.commit())
        return true;
    *error = file.errorString();
    return false;
}

bool write(QString const& name, QByteArray const& contents, QString* error) {
    bool const isWritten = replace(name, contents, error);
    if (!isWritten)
        *error = QStringLiteral("The file %1 cannot be written: %2").arg(name, *error);
    return isWritten;
}
} // namespace files
