#include "simulator/files/library_folder.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <array>
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace files {
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
} // namespace files
