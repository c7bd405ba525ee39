#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QSaveFile>

#ifdef Q_OS_WIN
#include <array>
#include <windows.h>
#else
#include <dlfcn.h>
#endif

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

QString libraryFolder() {
#ifdef Q_OS_WIN
    HMODULE module = nullptr;
    std::array<wchar_t, 32768> path{}; // the longest one
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCWSTR>(&libraryFolder), &module) ||
        GetModuleFileNameW(module, path.data(), DWORD(path.size() - 1)) == 0)
        return {};
    return QFileInfo(QString::fromWCharArray(path.data())).absolutePath();
#else
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void const*>(&libraryFolder), &info) || !info.dli_fname)
        return {};
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
#endif
}

std::optional<QByteArray> read(QString const& name, qint64 most, QString* error) {
    if (isOtherThanAFile(name, error))
        return std::nullopt;
    QFile file(name);
    QByteArray bytes;
    // Asked first, so that not even the bound is read of a file that is far too large; some tell a size of 0.
    if (file.open(QIODevice::ReadOnly) && file.size() <= most)
        bytes = file.read(most + 1);
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
