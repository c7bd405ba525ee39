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
constexpr char kNoFile[] = "it is no regular file";

bool isOtherThanAFile(QString const& name) {
    QFileInfo const info(name);
    return info.exists() && !info.isFile();
}

bool fail(QString const& name, QString const& cause, QString* error) {
    *error = QStringLiteral("%1: cannot be written: %2").arg(name, cause);
    return false;
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
    QFile file(name);
    QByteArray bytes;
    QString cause;
    // Asked first, so that not even the bound is read of a file that is far too large; some tell a size of 0.
    if (isOtherThanAFile(name))
        cause = QLatin1String(kNoFile);
    else if (file.open(QIODevice::ReadOnly) && file.size() <= most)
        bytes = file.read(most + 1);
    if (file.error() != QFileDevice::NoError)
        cause = file.errorString();
    else if (cause.isEmpty() && (file.size() > most || bytes.size() > most))
        cause = QStringLiteral("it has more than %1 bytes").arg(most);
    if (cause.isEmpty())
        return bytes;
    *error = QStringLiteral("%1: cannot be read: %2").arg(name, cause);
    return std::nullopt;
}

bool isReplaceable(QString const& name, QString* error) {
    QFileInfo const folder(QFileInfo(name).absolutePath());
    if (isOtherThanAFile(name))
        return fail(name, kNoFile, error);
    return (folder.isDir() && folder.isWritable()) || fail(name, "its folder takes no files", error);
}

bool replace(QString const& name, QByteArray const& contents, QString* error) {
    if (isOtherThanAFile(name))
        return fail(name, kNoFile, error);
    QSaveFile file(name);
    // Flushed here, because a commit does not notice when what is still buffered cannot be written.
    return (file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.flush() &&
            file.commit()) ||
           fail(name, file.errorString(), error);
}
} // namespace files
