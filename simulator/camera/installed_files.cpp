#include "simulator/camera/installed_files.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <array>
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace simulator {
QString libraryFolder() {
#ifdef Q_OS_WIN
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&libraryFolder), &module);
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(module, path.data(), DWORD(path.size() - 1));
    return QFileInfo(QString::fromWCharArray(path.data())).absolutePath();
#else
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void const*>(&libraryFolder), &info) || !info.dli_fname)
        return {};
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
#endif
}

QDir profileFolder() { return QDir(libraryFolder() + QStringLiteral("/profiles")); }
} // namespace simulator
