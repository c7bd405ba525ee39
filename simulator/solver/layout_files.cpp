#include "simulator/solver/layout_files.h"

#include <QFile>
#include <QFileInfo>

#ifdef _WIN32
#include <array>
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace solver {
namespace {
/// The library's own file; a host may have loaded it from anywhere.
QString ownFileName() {
    static char const anchor = 0;
#ifdef _WIN32
    HMODULE module = nullptr;
    std::array<wchar_t, 32768> name{}; // the longest path
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<wchar_t const*>(&anchor), &module) == 0 ||
        GetModuleFileNameW(module, name.data(), DWORD(name.size() - 1)) == 0)
        return {};
    return QString::fromWCharArray(name.data());
#else
    Dl_info info{};
    if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr)
        return {};
    return QFile::decodeName(info.dli_fname);
#endif
}
} // namespace

QString layoutFileName(uint32_t sensorKind, uint32_t variant) {
    QString const own = ownFileName();
    if (own.isEmpty())
        return {};
    return QStringLiteral("%1/layouts/%2-%3.layout")
        .arg(QFileInfo(own).absolutePath(), QString::number(sensorKind), QString::number(variant));
}
} // namespace solver
