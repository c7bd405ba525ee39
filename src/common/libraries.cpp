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

// What a function that is missing answers: nothing exists, nothing is found, every transfer fails.
template <auto value>
struct Absent {};
constexpr Absent<0> kNone{};
constexpr Absent<nullptr> kNull{};
constexpr Absent<-1> kFailed{};

#define KESTRA_FUNCTION(name, absent) each(table.name, #name, absent)
// Applies `each(member, name, what a missing one answers)` to every function of a library.
template <typename Each>
void forEachFunction(Veyra2& table, Each each) {
    KESTRA_FUNCTION(vy_ExistsRegister, kNone);
    KESTRA_FUNCTION(vy_ExistsBitfield, kNone);
    KESTRA_FUNCTION(vy_FindRegister, kNull);
    KESTRA_FUNCTION(vy_FindBitfield, kNull);
    KESTRA_FUNCTION(vy_FindRegisterAddr, kNull);
    KESTRA_FUNCTION(vy_dataSize, kNone);
    KESTRA_FUNCTION(vy_ReadSensorRegStr, kFailed);
    KESTRA_FUNCTION(vy_WriteSensorRegStr, kFailed);
    KESTRA_FUNCTION(vy_ReadSensorReg, kFailed);
    KESTRA_FUNCTION(vy_WriteSensorReg, kFailed);
    KESTRA_FUNCTION(vy_readRegisters, kFailed);
    KESTRA_FUNCTION(vy_writeRegisters, kFailed);
    KESTRA_FUNCTION(vy_setMode, kFailed);
    KESTRA_FUNCTION(vy_InvalidateRegCache, kNone);
    KESTRA_FUNCTION(vy_IsSOC, kNone);
    KESTRA_FUNCTION(vy_Home, kNull);
    KESTRA_FUNCTION(vy_stopTransport, kFailed);
    KESTRA_FUNCTION(vy_CloseCameras, kNone);
    KESTRA_FUNCTION(vy_SensorInfo, kNull);
}

template <typename Each>
void forEachFunction(Shadefit& table, Each each) {
    KESTRA_FUNCTION(sf_Create, kNull);
    KESTRA_FUNCTION(sf_Create2, kNull);
    KESTRA_FUNCTION(sf_SetInputImage2, kNone);
    KESTRA_FUNCTION(sf_SetInputImageYcbcr, kNone);
    KESTRA_FUNCTION(sf_FindSolution, kFailed);
    KESTRA_FUNCTION(sf_FindApga, kFailed);
    KESTRA_FUNCTION(sf_FindAutoPga, kFailed);
    KESTRA_FUNCTION(sf_DumpRegList, kNull);
    KESTRA_FUNCTION(sf_DumpRegFile, kFailed);
    KESTRA_FUNCTION(sf_Destroy, kNone);
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

Veyra2 const& veyra2() {
    return current<Veyra2>("veyra2");
}

Veyra2 const& absentVeyra2() {
    static Veyra2 const absent = completed(Veyra2());
    return absent;
}

Shadefit const& shadefit() {
    return current<Shadefit>("shadefit");
}

void installVeyra2(Veyra2 const& table) {
    installed<Veyra2> = completed(table);
}

void installShadefit(Shadefit const& table) {
    installed<Shadefit> = completed(table);
}

} // namespace kestra
