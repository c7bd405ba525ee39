#include "published/shadefit.h"

#include "simulator/boundary/observed_call.h"
#include "simulator/files/library_folder.h"
#include "simulator/files/sensor_layout.h"
#include "simulator/files/whole_file.h"
#include "simulator/solver/calibration.h"

#include <QDir>
#include <exception>
#include <utility>
#include <vector>

using simulator::Call;
using simulator::callText;
using simulator::callTexts;
using simulator::libraryWatch;
using simulator::observed;
using solver::Calibration;
using solver::logCause;

struct sf_Handle {
    explicit sf_Handle(simulator::SensorLayout layout) : calibration(std::move(layout)) {}

    uint32_t number = 0; ///< since somebody watches, so that equal runs show equal numbers
    Calibration calibration;
    std::vector<sf_RegEntry> entries; ///< what the last list shows
    sf_RegList list{};
};

// What an observer reads of arguments and results.

static QByteArray callText(sf_Handle const* handle) {
    return handle ? "handle" + QByteArray::number(handle->number) : QByteArrayLiteral("null");
}

/// A record's own size tells whether its members can be read.
template <typename Record, typename... Members>
static QByteArray recordText(Record const* record, Members... members) {
    if (!record || record->size != sizeof(Record))
        return record ? QByteArrayLiteral("{unknown size}") : QByteArrayLiteral("null");
    return '{' + callTexts(record->*members...) + '}';
}

static QByteArray callText(sf_YcbcrInput const* input) {
    using In = sf_YcbcrInput;
    return recordText(input, &In::srgbStandard, &In::componentOrder, &In::lumaLow, &In::lumaHigh,
                      &In::chromaHigh, &In::chromaZero, &In::orientation);
}

static QByteArray callText(sf_SolutionParams const* params) {
    using P = sf_SolutionParams;
    return recordText(params, &P::falloffPercent, &P::parameter12, &P::parameter16, &P::parameter20,
                      &P::parameter24, &P::parameter28, &P::parameter32, &P::parameter40, &P::parameter48,
                      &P::radius);
}

static QByteArray callText(sf_ApgaParams const* params) {
    using P = sf_ApgaParams;
    return recordText(params, &P::falloffPercent, &P::colourTemperature, &P::illuminantSlot, &P::parameter20,
                      &P::parameter24, &P::parameter28, &P::parameter32, &P::parameter36, &P::radius,
                      &P::parameter44);
}

static QByteArray callText(sf_RegList const* list) {
    if (!list)
        return QByteArrayLiteral("null");
    QByteArray entries;
    for (int32_t i = 0; i < list->count; ++i)
        entries += callTexts(list->entries[i].first, list->entries[i].second, list->entries[i].third) + '\n';
    return QByteArray::number(list->count) + " entries " +
           simulator::hashText(
               {reinterpret_cast<unsigned char const*>(entries.constData()), size_t(entries.size())});
}

namespace {
using simulator::callText; // besides those below

uint32_t handlesWatched = 0;

QByteArray createdText(sf_Handle* handle) {
    if (handle)
        handle->number = ++handlesWatched;
    return callText(handle);
}

struct SensorData {
    void const* block;
};

QByteArray callText(SensorData const& data) {
    return data.block ? QByteArrayLiteral("data") : QByteArrayLiteral("null");
}

struct Frame {
    void const* pixels;
    uint32_t width;
    uint32_t height;
};

QByteArray callText(Frame const& frame) {
    return (frame.pixels ? "frame " : "null ") + QByteArray::number(frame.width) + 'x' +
           QByteArray::number(frame.height);
}

/// Runs an entry's body inside the bracket for whoever watches; a caller written in C must meet no exception.
template <typename Result, typename... Arguments, typename Body, typename Answer = simulator::ResultText>
Result entry(Call<Arguments...> const& call, Result failure, Body body, Answer answer = {}) noexcept {
    return observed(
        call,
        [&]() -> Result {
            try {
                return body();
            } catch (std::exception const& exception) {
                qWarning("shadefit: %s", exception.what());
            } catch (...) {
                qWarning("shadefit: unknown exception");
            }
            return failure;
        },
        answer);
}

sf_Handle* newHandle(char const* block, QString const& source) {
    QString error;
    if (auto layout = simulator::parseSensorLayout(block, source, &error))
        return new sf_Handle(std::move(*layout));
    logCause(error);
    return nullptr;
}

/// The common road of the find operations: null arguments and records of another size fail.
template <typename Params, typename Body>
int find(char const* function, sf_Handle* handle, Params const* params, Body body) noexcept {
    constexpr int kFailed = int(solver::Outcome::Failed);
    return entry(Call(function, handle, params), kFailed, [&] {
        if (handle == nullptr)
            return kFailed;
        if (params == nullptr || params->size != sizeof(Params)) {
            handle->calibration.fail(QStringLiteral("parameters of unknown size"));
            return kFailed;
        }
        return int(body(handle->calibration));
    });
}

/// Whether there is something for a list or file to show.
bool holdsSolution(Calibration const& calibration, char const* purpose) {
    if (calibration.solution().empty())
        logCause(QStringLiteral("there is no solution to %1").arg(QLatin1String(purpose)));
    return !calibration.solution().empty();
}
} // namespace

LIBRARY_FUNCTION void sf_ObserveCalls(CallObserver const* observer) {
    libraryWatch.setObserver(observer);
    handlesWatched = 0;
}

LIBRARY_FUNCTION sf_Handle* sf_Create(uint32_t sensorKind, uint32_t variant, int32_t minusOne) {
    return entry<sf_Handle*>(
        Call("sf_Create", sensorKind, variant, minusOne), nullptr,
        [&]() -> sf_Handle* {
            QString const name = QStringLiteral("%1/layouts/%2-%3.layout")
                                     .arg(files::libraryFolder())
                                     .arg(sensorKind)
                                     .arg(variant);
            QString error;
            if (auto const block = files::read(name, files::kMostText, &error))
                return newHandle(block->constData(), name);
            logCause(QStringLiteral("no layout for sensor kind %1, variant %2: %3: %4")
                         .arg(QString::number(sensorKind), QString::number(variant), name, error));
            return nullptr;
        },
        createdText);
}

LIBRARY_FUNCTION sf_Handle* sf_Create2(void const* sensorData, uint32_t sensorKind, uint32_t variant,
                                       uint32_t allBits) {
    return entry<sf_Handle*>(
        Call("sf_Create2", SensorData{sensorData}, sensorKind, variant, allBits), nullptr,
        [&] {
            // The block names its own kind and variant; the caller's do not count.
            return newHandle(static_cast<char const*>(sensorData), QStringLiteral("sensor data"));
        },
        createdText);
}

LIBRARY_FUNCTION int sf_SetInputImage2(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
                                       uint32_t bits, uint32_t bayerPhase, uint32_t orientation,
                                       uint32_t zero, int32_t minusOne1, int32_t minusOne2) {
    return entry(Call("sf_SetInputImage2", handle, Frame{frame, width, height}, bits, bayerPhase, orientation,
                      zero, minusOne1, minusOne2),
                 0, [&] {
                     if (handle == nullptr)
                         return 0;
                     if (frame == nullptr || width == 0 || height == 0) {
                         handle->calibration.refuse(QStringLiteral("the input image is empty"));
                         return 0;
                     }
                     return handle->calibration.setImage(frame, width, height, bayerPhase, orientation) ? 1
                                                                                                        : 0;
                 });
}

LIBRARY_FUNCTION int sf_SetInputImageYcbcr(sf_Handle* handle, void const* frame, uint32_t width,
                                           uint32_t height, sf_YcbcrInput const* input, int32_t minusOne1,
                                           int32_t minusOne2) {
    return entry(
        Call("sf_SetInputImageYcbcr", handle, Frame{frame, width, height}, input, minusOne1, minusOne2), 0,
        [&] {
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
}

LIBRARY_FUNCTION int sf_FindSolution(sf_Handle* handle, sf_SolutionParams const* params) {
    return find("sf_FindSolution", handle, params, [&](Calibration& calibration) {
        return calibration.findBase(params->falloffPercent, params->radius);
    });
}

LIBRARY_FUNCTION int sf_FindApga(sf_Handle* handle, sf_ApgaParams const* params) {
    return find("sf_FindApga", handle, params,
                [&](Calibration& calibration) { return calibration.findTable(*params); });
}

LIBRARY_FUNCTION int sf_FindAutoPga(sf_Handle* handle, sf_ApgaParams const* params) {
    return find("sf_FindAutoPga", handle, params,
                [&](Calibration& calibration) { return calibration.findFullTable(*params); });
}

LIBRARY_FUNCTION sf_RegList const* sf_DumpRegList(sf_Handle* handle) {
    return entry<sf_RegList const*>(Call("sf_DumpRegList", handle), nullptr, [&]() -> sf_RegList const* {
        if (handle == nullptr || !holdsSolution(handle->calibration, "list"))
            return nullptr;
        handle->entries = solver::allRegisters(handle->calibration.layout(), handle->calibration.solution());
        handle->list = {int32_t(handle->entries.size()), handle->entries.data()};
        return &handle->list;
    });
}

LIBRARY_FUNCTION int sf_DumpRegFile(sf_Handle* handle, char const* path, uint32_t format, uint32_t zero1,
                                    uint32_t zero2) {
    return entry(Call("sf_DumpRegFile", handle, path, format, zero1, zero2), -1, [&] {
        if (handle == nullptr || path == nullptr)
            return -1;
        auto const presetFormat = static_cast<solver::PresetFormat>(format);
        if (presetFormat != solver::PresetFormat::Plain && presetFormat != solver::PresetFormat::Tables) {
            logCause(QStringLiteral("unknown file format %1").arg(format));
            return -1;
        }
        Calibration const& calibration = handle->calibration;
        if (!holdsSolution(calibration, "write"))
            return -1;
        // Hosts build the path with either separator.
        QString name = QString::fromLocal8Bit(path);
        if (QDir::separator() != QLatin1Char('\\'))
            name.replace(QLatin1Char('\\'), QLatin1Char('/'));
        QString error;
        if (files::replace(name, presetText(calibration.layout(), calibration.solution(), presetFormat),
                           &error))
            return 0;
        logCause(QStringLiteral("cannot write %1: %2").arg(name, error));
        return -1;
    });
}

LIBRARY_FUNCTION void sf_Destroy(sf_Handle* handle) {
    observed(Call("sf_Destroy", handle), [&] { delete handle; });
}
