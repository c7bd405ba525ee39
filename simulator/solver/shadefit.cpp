#include "published/shadefit.h"

#include "simulator/boundary/observed_call.h"
#include "simulator/files/sensor_layout.h"
#include "simulator/files/whole_file.h"
#include "simulator/solver/calibration.h"

#include <QDir>
#include <exception>
#include <utility>
#include <vector>

using simulator::Call;
using simulator::callTexts;
using simulator::libraryWatch;
using simulator::observed;
using solver::Calibration;
using solver::logCause;
using solver::Outcome;

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
uint32_t handlesWatched = 0;

QByteArray createdText(sf_Handle* handle) {
    if (handle)
        handle->number = ++handlesWatched;
    return callText(handle);
}

struct SensorData;

QByteArray callText(SensorData const* data) {
    return data ? QByteArrayLiteral("data") : QByteArrayLiteral("null");
}

struct Frame {
    void const* pixels;
    uint32_t width;
    uint32_t height;

    [[nodiscard]] bool isEmpty() const { return pixels == nullptr || width == 0 || height == 0; }
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

/// The same for an operation on a handle; a null one fails.
template <typename Result, typename... Arguments, typename Body>
Result entryOf(sf_Handle* handle, Call<Arguments...> const& call, Result failure, Body body) noexcept {
    return entry(call, failure, [&]() -> Result { return handle ? body(*handle) : failure; });
}

sf_Handle* newHandle(char const* block, QString const& source) {
    QString error;
    if (auto layout = simulator::parseSensorLayout(block, source, &error))
        return new sf_Handle(std::move(*layout));
    logCause(error);
    return nullptr;
}

/// The common road of the find operations: null arguments and records of another size fail.
template <typename Params>
int find(char const* function, sf_Handle* handle, Params const* params,
         Outcome (Calibration::*operation)(Params const&)) noexcept {
    return entryOf(handle, Call(function, handle, params), int(Outcome::Failed), [&](sf_Handle& of) {
        if (params == nullptr || params->size != sizeof(Params))
            return int(of.calibration.fail(QStringLiteral("parameters of unknown size")));
        return int((of.calibration.*operation)(*params));
    });
}

/// Whether there is something for a list or file to show.
bool holdsSolution(sf_Handle const& handle, char const* purpose) {
    if (!handle.calibration.hasSolution())
        logCause(QStringLiteral("there is no solution to %1").arg(QLatin1String(purpose)));
    return handle.calibration.hasSolution();
}
} // namespace

LIBRARY_FUNCTION void sf_ObserveCalls(CallObserver const* observer) {
    libraryWatch.observer = observer;
    handlesWatched = 0;
}

LIBRARY_FUNCTION sf_Handle* sf_Create(uint32_t sensorKind, uint32_t variant, int32_t minusOne) {
    auto const fromFile = [&]() -> sf_Handle* {
        QString const name =
            files::libraryFolder() + QStringLiteral("/layouts/%1-%2.layout").arg(sensorKind).arg(variant);
        QString error;
        if (auto const block = files::read(name, files::kMostText, &error))
            return newHandle(block->constData(), name);
        logCause(QStringLiteral("no layout for sensor kind %1, variant %2: %3")
                     .arg(QString::number(sensorKind), QString::number(variant), error));
        return nullptr;
    };
    return entry<sf_Handle*>(Call(__func__, sensorKind, variant, minusOne), nullptr, fromFile, createdText);
}

LIBRARY_FUNCTION sf_Handle* sf_Create2(void const* sensorData, uint32_t sensorKind, uint32_t variant,
                                       uint32_t allBits) {
    // The block names its own kind and variant; the caller's do not count.
    return entry<sf_Handle*>(
        Call(__func__, static_cast<SensorData const*>(sensorData), sensorKind, variant, allBits), nullptr,
        [&] { return newHandle(static_cast<char const*>(sensorData), QStringLiteral("sensor data")); },
        createdText);
}

LIBRARY_FUNCTION int sf_SetInputImage2(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
                                       uint32_t bits, uint32_t bayerPhase, uint32_t orientation,
                                       uint32_t zero, int32_t minusOne1, int32_t minusOne2) {
    Frame const told{frame, width, height};
    return entryOf(handle,
                   Call(__func__, handle, told, bits, bayerPhase, orientation, zero, minusOne1, minusOne2), 0,
                   [&](sf_Handle& of) -> int {
                       if (told.isEmpty())
                           return of.calibration.refuse(QStringLiteral("the input image is empty"));
                       return of.calibration.setImage(frame, width, height, bayerPhase, orientation);
                   });
}

LIBRARY_FUNCTION int sf_SetInputImageYcbcr(sf_Handle* handle, void const* frame, uint32_t width,
                                           uint32_t height, sf_YcbcrInput const* input, int32_t minusOne1,
                                           int32_t minusOne2) {
    Frame const told{frame, width, height};
    return entryOf(handle, Call(__func__, handle, told, input, minusOne1, minusOne2), 0,
                   [&](sf_Handle& of) -> int {
                       if (told.isEmpty() || input == nullptr || input->size != sizeof(sf_YcbcrInput))
                           return of.calibration.refuse(
                               QStringLiteral("the input image is empty or its coding is not told"));
                       return of.calibration.setYcbcrImage(frame, width, height, *input);
                   });
}

LIBRARY_FUNCTION int sf_FindSolution(sf_Handle* handle, sf_SolutionParams const* params) {
    return find(__func__, handle, params, &Calibration::findBase);
}

LIBRARY_FUNCTION int sf_FindApga(sf_Handle* handle, sf_ApgaParams const* params) {
    return find(__func__, handle, params, &Calibration::findTable);
}

LIBRARY_FUNCTION int sf_FindAutoPga(sf_Handle* handle, sf_ApgaParams const* params) {
    return find(__func__, handle, params, &Calibration::findFullTable);
}

LIBRARY_FUNCTION sf_RegList const* sf_DumpRegList(sf_Handle* handle) {
    return entryOf<sf_RegList const*>(handle, Call(__func__, handle), nullptr,
                                      [](sf_Handle& of) -> sf_RegList const* {
                                          if (!holdsSolution(of, "list"))
                                              return nullptr;
                                          of.entries = of.calibration.registers();
                                          of.list = {int32_t(of.entries.size()), of.entries.data()};
                                          return &of.list;
                                      });
}

LIBRARY_FUNCTION int sf_DumpRegFile(sf_Handle* handle, char const* path, uint32_t format, uint32_t zero1,
                                    uint32_t zero2) {
    return entryOf(handle, Call(__func__, handle, path, format, zero1, zero2), -1, [&](sf_Handle& of) {
        if (path == nullptr)
            return -1;
        constexpr uint32_t kPlain = 0, kTablesApart = 2;
        if (format != kPlain && format != kTablesApart) {
            logCause(QStringLiteral("unknown file format %1").arg(format));
            return -1;
        }
        if (!holdsSolution(of, "write"))
            return -1;
        // Hosts build the path with either separator.
        QString name = QString::fromLocal8Bit(path);
        if (QDir::separator() != QLatin1Char('\\'))
            name.replace(QLatin1Char('\\'), QLatin1Char('/'));
        QString error;
        if (files::replace(name, of.calibration.presetText(format == kTablesApart), &error))
            return 0;
        logCause(error);
        return -1;
    });
}

LIBRARY_FUNCTION void sf_Destroy(sf_Handle* handle) {
    observed(Call(__func__, handle), [&] { delete handle; });
}
