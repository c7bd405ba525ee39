#include "common/libraries.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QtDebug>
#include <filesystem>
#include <optional>

#ifdef Q_OS_WIN
#include <vector>
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace kestra {
namespace {
template <auto value>
struct Absent {};

#define KESTRA_FUNCTION(name, absent) each(table.name, #name, Absent<absent>());
// Applies `each(member, name, what a missing one answers)` to every function of a library.
template <typename Each>
void forEachFunction(Veyra2& table, Each each) {
    KESTRA_VEYRA2(KESTRA_FUNCTION)
}
template <typename Each>
void forEachFunction(Shadefit& table, Each each) {
    KESTRA_SHADEFIT(KESTRA_FUNCTION)
}
#undef KESTRA_FUNCTION

// Fills a function that is missing.
template <typename Result, typename... Arguments, auto value>
void fill(Result (*&function)(Arguments...), Absent<value>) {
    if (!function)
        function = [](Arguments...) { return Result(value); };
}

template <typename Table>
Table completed(Table table) {
    forEachFunction(table, [](auto& member, char const*, auto absent) { fill(member, absent); });
    return table;
}

// The file that holds this code: the plug-in's own. No text of Qt: that would fix the locale's encoding
// before a program has chosen its locale.
std::filesystem::path findOwnFile() {
#ifdef Q_OS_WIN
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&findOwnFile), &module);
    std::vector<wchar_t> path(32768);
    GetModuleFileNameW(module, path.data(), DWORD(path.size() - 1));
    return path.data();
#else
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void const*>(&findOwnFile), &info) || !info.dli_fname)
        return {};
    std::error_code error; // without the current folder there is none to be found
    return std::filesystem::absolute(info.dli_fname, error);
#endif
}

// Found at loading: a host that loads the plug-in by a relative path may change its folder later.
std::filesystem::path const kOwnFile = findOwnFile();

QString ownFolder() {
#ifdef Q_OS_WIN
    return QFileInfo(QString::fromStdWString(kOwnFile.wstring())).absolutePath();
#else
    return QFileInfo(QFile::decodeName(kOwnFile.c_str())).absolutePath();
#endif
}

template <typename Table>
Table load(QString const& name) {
    QLibrary library;
    // A library is kept for the process: its code may be on the stack when the last page goes.
    library.setLoadHints(QLibrary::PreventUnloadHint);
    // Both failures are told: a library that lies beside the plug-in but does not load is the usual one.
    QString causes;
    for (QString const& place : {ownFolder() + QLatin1Char('/') + name, name}) {
        library.setFileName(place);
        if (library.load())
            break;
        causes += QStringLiteral("\n  ") + library.errorString();
    }
    Table table;
    if (!library.isLoaded()) {
        qWarning("KestraMfr: the library %s cannot be loaded:%s", qUtf8Printable(name),
                 qUtf8Printable(causes));
        return completed(table);
    }
    forEachFunction(table, [&](auto& member, char const* function, auto) {
        member = reinterpret_cast<std::decay_t<decltype(member)>>(library.resolve(function));
        if (!member)
            qWarning("KestraMfr: the library %s lacks the function %s", qUtf8Printable(name), function);
    });
    return completed(table);
}

// The table in use. It is loaded by whoever asks first, so a table that is installed before that keeps the
// shared library out of the process.
template <typename Table>
std::optional<Table> installed;

template <typename Table>
Table const& current(char const* name) {
    if (!installed<Table>)
        installed<Table> = load<Table>(QLatin1String(name));
    return *installed<Table>;
}
} // namespace

Veyra2 const& veyra2() { return current<Veyra2>("veyra2"); }

Veyra2 const& absentVeyra2() {
    static Veyra2 const absent = completed(Veyra2());
    return absent;
}

Shadefit const& shadefit() { return current<Shadefit>("shadefit"); }
void installVeyra2(Veyra2 const& table) { installed<Veyra2> = completed(table); }
void installShadefit(Shadefit const& table) { installed<Shadefit> = completed(table); }
} // namespace kestra
