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

constexpr int kFailed = -1;

// What stands in for a missing function: nothing exists, nothing is found, every transfer fails.
constexpr Veyra2 kAbsentVeyra2 = {
    .vy_ExistsRegister = [](vy_Camera*, char const*) { return 0; },
    .vy_ExistsBitfield = [](vy_Camera*, char const*, char const*) { return 0; },
    .vy_FindRegister = [](vy_Camera*, char const*) -> vy_RegisterDescription const* { return nullptr; },
    .vy_FindBitfield = [](vy_Camera*, char const*, char const*) -> vy_BitfieldDescription const* {
        return nullptr;
    },
    .vy_FindRegisterAddr = [](vy_Camera*, uint32_t, uint32_t, uint32_t) -> vy_RegisterDescription const* {
        return nullptr;
    },
    .vy_dataSize = [](uint32_t) { return 0U; },
    .vy_ReadSensorRegStr = [](vy_Camera*, char const*, char const*, uint32_t*) { return kFailed; },
    .vy_WriteSensorRegStr = [](vy_Camera*, char const*, char const*, uint32_t) { return kFailed; },
    .vy_ReadSensorReg = [](vy_Camera*, vy_RegisterDescription const*, uint32_t*) { return kFailed; },
    .vy_WriteSensorReg = [](vy_Camera*, vy_RegisterDescription const*, uint32_t) { return kFailed; },
    .vy_readRegisters = [](vy_Camera*, uint32_t, uint32_t, uint32_t, uint32_t*) { return kFailed; },
    .vy_writeRegisters = [](vy_Camera*, uint32_t, uint32_t, uint32_t, uint32_t const*) { return kFailed; },
    .vy_setMode = [](vy_Camera*, uint32_t, uint32_t) { return kFailed; },
    .vy_InvalidateRegCache = [](vy_Camera*) {},
    .vy_IsSOC = [](vy_Camera*) { return 0; },
    .vy_Home = []() -> char const* { return nullptr; },
    .vy_stopTransport = [](vy_Camera*) { return kFailed; },
    .vy_CloseCameras = []() {},
    .vy_SensorInfo = [](vy_Camera*) -> vy_SensorDescription const* { return nullptr; },
};

constexpr Shadefit kAbsentShadefit = {
    .sf_Create = [](uint32_t, uint32_t, int32_t) -> sf_Handle* { return nullptr; },
    .sf_Create2 = [](void const*, uint32_t, uint32_t, uint32_t) -> sf_Handle* { return nullptr; },
    .sf_SetInputImage2 = [](sf_Handle*, void const*, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                            uint32_t, int32_t, int32_t) { return 0; },
    .sf_SetInputImageYcbcr = [](sf_Handle*, void const*, uint32_t, uint32_t, sf_YcbcrInput const*, int32_t,
                                int32_t) { return 0; },
    .sf_FindSolution = [](sf_Handle*, sf_SolutionParams const*) { return kFailed; },
    .sf_FindApga = [](sf_Handle*, sf_ApgaParams const*) { return kFailed; },
    .sf_FindAutoPga = [](sf_Handle*, sf_ApgaParams const*) { return kFailed; },
    .sf_DumpRegList = [](sf_Handle*) -> sf_RegList const* { return nullptr; },
    .sf_DumpRegFile = [](sf_Handle*, char const*, uint32_t, uint32_t, uint32_t) { return kFailed; },
    .sf_Destroy = [](sf_Handle*) {},
};

// Applies `each(member of table, member of absent, name)` to every function of a library.
template <typename Each>
void forEachFunction(Veyra2& table, Each each) {
#define KESTRA_FUNCTION(name) each(table.name, kAbsentVeyra2.name, #name)
    KESTRA_FUNCTION(vy_ExistsRegister);
    KESTRA_FUNCTION(vy_ExistsBitfield);
    KESTRA_FUNCTION(vy_FindRegister);
    KESTRA_FUNCTION(vy_FindBitfield);
    KESTRA_FUNCTION(vy_FindRegisterAddr);
    KESTRA_FUNCTION(vy_dataSize);
    KESTRA_FUNCTION(vy_ReadSensorRegStr);
    KESTRA_FUNCTION(vy_WriteSensorRegStr);
    KESTRA_FUNCTION(vy_ReadSensorReg);
    KESTRA_FUNCTION(vy_WriteSensorReg);
    KESTRA_FUNCTION(vy_readRegisters);
    KESTRA_FUNCTION(vy_writeRegisters);
    KESTRA_FUNCTION(vy_setMode);
    KESTRA_FUNCTION(vy_InvalidateRegCache);
    KESTRA_FUNCTION(vy_IsSOC);
    KESTRA_FUNCTION(vy_Home);
    KESTRA_FUNCTION(vy_stopTransport);
    KESTRA_FUNCTION(vy_CloseCameras);
    KESTRA_FUNCTION(vy_SensorInfo);
#undef KESTRA_FUNCTION
}

template <typename Each>
void forEachFunction(Shadefit& table, Each each) {
#define KESTRA_FUNCTION(name) each(table.name, kAbsentShadefit.name, #name)
    KESTRA_FUNCTION(sf_Create);
    KESTRA_FUNCTION(sf_Create2);
    KESTRA_FUNCTION(sf_SetInputImage2);
    KESTRA_FUNCTION(sf_SetInputImageYcbcr);
    KESTRA_FUNCTION(sf_FindSolution);
    KESTRA_FUNCTION(sf_FindApga);
    KESTRA_FUNCTION(sf_FindAutoPga);
    KESTRA_FUNCTION(sf_DumpRegList);
    KESTRA_FUNCTION(sf_DumpRegFile);
    KESTRA_FUNCTION(sf_Destroy);
#undef KESTRA_FUNCTION
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
    if (!library.isLoaded())
        qWarning("KestraMfr: the library %s cannot be loaded:%s", qUtf8Printable(name),
                 qUtf8Printable(causes));
    Table table;
    forEachFunction(table, [&](auto& member, auto absent, char const* function) {
        using Function = std::decay_t<decltype(absent)>;
        member = library.isLoaded() ? reinterpret_cast<Function>(library.resolve(function)) : nullptr;
        if (member)
            return;
        member = absent;
        if (library.isLoaded())
            qWarning("KestraMfr: the library %s lacks the function %s", qUtf8Printable(name), function);
    });
    return table;
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

template <typename Table>
Table completed(Table table) {
    forEachFunction(table, [](auto& member, auto absent, char const*) {
        if (!member)
            member = absent;
    });
    return table;
}

} // namespace

Veyra2 const& veyra2() {
    return current<Veyra2>("veyra2");
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
