#include "published/shadefit.h"

#include "simulator/boundary/call_text.h"
#include "simulator/boundary/observed_call.h"
#include "simulator/solver/calibration.h"
#include "simulator/solver/layout_files.h"
#include "simulator/solver/preset_file.h"

#include <QFile>
#include <exception>
#include <optional>
#include <utility>
#include <vector>

#ifdef _MSC_VER
// Declared without an export, no definition may have one there; the linker exports all.
#define SHADEFIT_API extern "C"
#elif defined(_WIN32)
#define SHADEFIT_API extern "C" __declspec(dllexport)
#else
#define SHADEFIT_API extern "C" __attribute__((visibility("default")))
#endif

using simulator::callText;
using simulator::callTexts;
using simulator::observed;
using solver::Calibration;
using solver::logCause;

struct sf_Handle {
    explicit sf_Handle(solver::SensorLayout layout) : calibration(std::move(layout)) {}

    uint32_t number = 0; ///< since somebody watches, so that equal runs show equal numbers
    Calibration calibration;
    std::vector<sf_RegEntry> entries; ///< what the last list shows
    sf_RegList list{};
};

namespace {
/// Runs an entry's body; a caller written in C must meet no exception.
template <typename Result, typename Body>
Result guarded(Result failure, Body body) noexcept {
    try {
        return body();
    } catch (std::exception const& exception) {
        qWarning("shadefit: %s", exception.what());
    } catch (...) {
        qWarning("shadefit: unknown exception");
    }
    return failure;
}

sf_Handle* newHandle(std::optional<solver::SensorLayout> layout, QString const& source,
                     QString const& error) {
    if (layout)
        return new sf_Handle(std::move(*layout));
    logCause(QStringLiteral("%1: %2").arg(source, error));
    return nullptr;
}

// What an observer reads of arguments and results.

uint32_t handlesWatched = 0;

QByteArray handleText(sf_Handle const* handle) {
    return handle ? "handle" + QByteArray::number(handle->number) : QByteArrayLiteral("null");
}

QByteArray createdText(sf_Handle* handle) {
    if (handle)
        handle->number = ++handlesWatched;
    return handleText(handle);
}

QByteArray frameText(void const* frame, uint32_t width, uint32_t height) {
    return (frame ? "frame " : "null ") + QByteArray::number(width) + 'x' + QByteArray::number(height);
}

// A record's own size tells whether its members can be read.
template <typename Record, typename Members>
QByteArray recordText(Record const* record, Members members) {
    if (!record || record->size != sizeof(Record))
        return record ? QByteArrayLiteral("{unknown size}") : QByteArrayLiteral("null");
    return '{' + members(*record) + '}';
}

QByteArray codingText(sf_YcbcrInput const* input) {
    return recordText(input, [](sf_YcbcrInput const& in) {
        uint32_t const* const order = in.componentOrder;
        return callTexts(in.srgbStandard, order[0], order[1], order[2], order[3], in.lumaLow, in.lumaHigh,
                         in.chromaHigh, in.chromaZero, in.orientation);
    });
}

QByteArray wishText(sf_SolutionParams const* params) {
    return recordText(params, [](sf_SolutionParams const& p) {
        return callTexts(p.falloffPercent, p.parameter12, p.parameter16, p.parameter20, p.parameter24,
                         p.parameter28) +
               ' ' + QByteArray::number(p.parameter32) + ' ' + QByteArray::number(p.parameter40) + ' ' +
               callTexts(p.parameter48, p.radius);
    });
}

QByteArray wishText(sf_ApgaParams const* params) {
    return recordText(params, [](sf_ApgaParams const& p) {
        return callTexts(p.falloffPercent, p.colourTemperature, p.illuminantSlot, p.parameter20,
                         p.parameter24, p.parameter28, p.parameter32, p.parameter36, p.radius, p.parameter44);
    });
}

QByteArray listText(sf_RegList const* list) {
    if (!list)
        return QByteArrayLiteral("null");
    QByteArray entries;
    for (int32_t i = 0; i < list->count; ++i)
        entries += callTexts(list->entries[i].first, list->entries[i].second, list->entries[i].third) + '\n';
    return QByteArray::number(list->count) + " entries " +
           simulator::hashText(
               {reinterpret_cast<unsigned char const*>(entries.constData()), size_t(entries.size())});
}

/// The common road of the find operations: null arguments and records of another size fail.
template <typename Params, typename Body>
int find(sf_Handle* handle, Params const* params, Body body) noexcept {
    constexpr int kFailed = static_cast<int>(solver::Outcome::Failed);
    return guarded(kFailed, [&] {
        if (handle == nullptr)
            return kFailed;
        if (params == nullptr || params->size != sizeof(Params)) {
            handle->calibration.fail(QStringLiteral("parameters of unknown size"));
            return kFailed;
        }
        return static_cast<int>(body(handle->calibration));
    });
}
} // namespace

SHADEFIT_API void sf_ObserveCalls(CallObserver const* observer) {
    simulator::callWatch.observer = observer;
    handlesWatched = 0;
}

SHADEFIT_API sf_Handle* sf_Create(uint32_t sensorKind, uint32_t variant, int32_t minusOne) {
    return observed(
        "sf_Create", [&] { return callTexts(sensorKind, variant, minusOne); }, createdText,
        [&] {
            return guarded<sf_Handle*>(nullptr, [&] {
                QFile file(solver::layoutFileName(sensorKind, variant));
                if (!file.open(QIODevice::ReadOnly)) {
                    logCause(QStringLiteral("no layout for sensor kind %1, variant %2: %3: %4")
                                 .arg(QString::number(sensorKind), QString::number(variant), file.fileName(),
                                      file.errorString()));
                    return static_cast<sf_Handle*>(nullptr);
                }
                QString error;
                auto layout = solver::parseLayout(file.readAll(), &error);
                return newHandle(std::move(layout), file.fileName(), error);
            });
        });
}

SHADEFIT_API sf_Handle* sf_Create2(void const* sensorData, uint32_t sensorKind, uint32_t variant,
                                   uint32_t allBits) {
    return observed(
        "sf_Create2",
        [&] { return (sensorData ? "data " : "null ") + callTexts(sensorKind, variant, allBits); },
        createdText,
        [&] {
            // The block names its own kind and variant; the caller's do not count.
            return guarded<sf_Handle*>(nullptr, [&] {
                QString error;
                auto layout = solver::parseSensorData(sensorData, &error);
                return newHandle(std::move(layout), QStringLiteral("sensor data"), error);
            });
        });
}

SHADEFIT_API int sf_SetInputImage2(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
                                   uint32_t bits, uint32_t bayerPhase, uint32_t orientation, uint32_t zero,
                                   int32_t minusOne1, int32_t minusOne2) {
    return observed(
        "sf_SetInputImage2",
        [&] {
            return handleText(handle) + ' ' + frameText(frame, width, height) + ' ' +
                   callTexts(bits, bayerPhase, orientation, zero, minusOne1, minusOne2);
        },
        [&] {
            return guarded(0, [&] {
                if (handle == nullptr)
                    return 0;
                if (frame == nullptr || width == 0 || height == 0) {
                    handle->calibration.refuse(QStringLiteral("the input image is empty"));
                    return 0;
                }
                return handle->calibration.setImage(frame, width, height, bayerPhase, orientation) ? 1 : 0;
            });
        });
}

SHADEFIT_API int sf_SetInputImageYcbcr(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
                                       sf_YcbcrInput const* input, int32_t minusOne1, int32_t minusOne2) {
    return observed(
        "sf_SetInputImageYcbcr",
        [&] {
            return handleText(handle) + ' ' + frameText(frame, width, height) + ' ' + codingText(input) +
                   ' ' + callTexts(minusOne1, minusOne2);
        },
        [&] {
            return guarded(0, [&] {
                if (handle == nullptr)
                    return 0;
                if (frame == nullptr || width == 0 || height == 0 || input == nullptr ||
                    input->size != sizeof(sf_YcbcrInput)) {
                    handle->calibration.refuse(
                        QStringLiteral("the input image is empty or its coding is not told"));
                    return 0;
                }
                return handle->calibration.setYcbcrImage(frame, width, height, *input) ? 1 : 0;
            });
        });
}

SHADEFIT_API int sf_FindSolution(sf_Handle* handle, sf_SolutionParams const* params) {
    return observed(
        "sf_FindSolution", [&] { return handleText(handle) + ' ' + wishText(params); },
        [&] {
            return find(handle, params, [&](Calibration& calibration) {
                return calibration.findBase(params->falloffPercent, params->radius);
            });
        });
}

SHADEFIT_API int sf_FindApga(sf_Handle* handle, sf_ApgaParams const* params) {
    return observed(
        "sf_FindApga", [&] { return handleText(handle) + ' ' + wishText(params); },
        [&] {
            return find(handle, params,
                        [&](Calibration& calibration) { return calibration.findTable(*params); });
        });
}

SHADEFIT_API int sf_FindAutoPga(sf_Handle* handle, sf_ApgaParams const* params) {
    return observed(
        "sf_FindAutoPga", [&] { return handleText(handle) + ' ' + wishText(params); },
        [&] {
            return find(handle, params,
                        [&](Calibration& calibration) { return calibration.findFullTable(*params); });
        });
}

SHADEFIT_API sf_RegList const* sf_DumpRegList(sf_Handle* handle) {
    return observed(
        "sf_DumpRegList", [&] { return handleText(handle); }, listText,
        [&] {
            return guarded<sf_RegList const*>(nullptr, [&]() -> sf_RegList const* {
                if (handle == nullptr)
                    return nullptr;
                Calibration const& calibration = handle->calibration;
                if (calibration.solution().empty()) {
                    logCause(QStringLiteral("there is no solution to list"));
                    return nullptr;
                }
                handle->entries = solver::allRegisters(calibration.layout(), calibration.solution());
                handle->list = {static_cast<int32_t>(handle->entries.size()), handle->entries.data()};
                return &handle->list;
            });
        });
}

SHADEFIT_API int sf_DumpRegFile(sf_Handle* handle, char const* path, uint32_t format, uint32_t zero1,
                                uint32_t zero2) {
    return observed(
        "sf_DumpRegFile", [&] { return handleText(handle) + ' ' + callTexts(path, format, zero1, zero2); },
        [&] {
            return guarded(-1, [&] {
                if (handle == nullptr || path == nullptr)
                    return -1;
                auto const presetFormat = static_cast<solver::PresetFormat>(format);
                if (presetFormat != solver::PresetFormat::Plain &&
                    presetFormat != solver::PresetFormat::Tables) {
                    logCause(QStringLiteral("unknown file format %1").arg(format));
                    return -1;
                }
                Calibration const& calibration = handle->calibration;
                if (calibration.solution().empty()) {
                    logCause(QStringLiteral("there is no solution to write"));
                    return -1;
                }
                QByteArray const text =
                    solver::presetText(calibration.layout(), calibration.solution(), presetFormat);
                QString error;
                if (solver::writeWhole(solver::fileNameFromHost(path), text, &error))
                    return 0;
                logCause(error);
                return -1;
            });
        });
}

SHADEFIT_API void sf_Destroy(sf_Handle* handle) {
    observed(
        "sf_Destroy", [&] { return handleText(handle); }, [&] { delete handle; });
}
