#include "simulator/host/report/summary_json.h"

#include "simulator/host/report/report_figures.h"
#include "simulator/host/report/rounded_numbers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace pictara {
namespace {
// Rows of a grid.
QJsonArray gridRows(std::vector<double> const& values, int columns) {
    QJsonArray rows;
    for (size_t from = 0; from < values.size(); from += size_t(columns))
        rows.append(roundedNumbers({values.begin() + std::ptrdiff_t(from),
                                    values.begin() + std::ptrdiff_t(from) + std::ptrdiff_t(columns)}));
    return rows;
}

QJsonObject diagonals(LightMaps const& maps) {
    QJsonObject object;
    for (PictureQuantity const& quantity : pictureQuantities())
        object[QLatin1String(quantity.key)] =
            roundedNumbers(diagonal(quantity.of(maps), maps.sensor.columns, maps.sensor.rows));
    return object;
}

QJsonObject extremes(LightMaps const& maps) {
    QJsonObject object;
    for (PictureQuantity const& quantity : pictureQuantities()) {
        std::vector<double> const values = quantity.of(maps);
        if (values.empty())
            continue;
        auto const [low, high] = std::minmax_element(values.begin(), values.end());
        object[QLatin1String(quantity.key)] = roundedNumbers({*low, *high});
    }
    return object;
}

QJsonValue stateObject(std::optional<Evenness> const& evenness) {
    if (!evenness)
        return QJsonValue::Null;
    QJsonObject state;
    for (Figure const& figure : pictureFigures())
        state[QLatin1String(figure.key)] = rounded(figure.of(*evenness));
    state[QStringLiteral("dialog_rating")] = evenness->rating;
    PictureDetail const& detail = evenness->detail;
    DeviationBins const bins = deviationBins(detail.shown.deviations);
    QJsonArray counts;
    std::copy(bins.counts.begin(), bins.counts.end(), std::back_inserter(counts));
    state[QStringLiteral("block_deviation_histogram")] = QJsonObject{
        {QStringLiteral("bin_width_ab"), rounded(bins.width)}, {QStringLiteral("counts"), counts}};
    state[QStringLiteral("diagonal")] = diagonals(detail.maps);
    state[QStringLiteral("true_diagonal")] = diagonals(detail.trueMaps);
    state[QStringLiteral("map_extremes")] = extremes(detail.maps);
    state[QStringLiteral("blocks_11x11")] = QJsonObject{
        {QStringLiteral("luminance_residual_percent"),
         gridRows(luminanceResidual(detail.coarseLight), detail.coarseLight.columns)},
        {QStringLiteral("colour_residual_ab"),
         gridRows(detail.coarseColour.deviations, detail.coarseColour.columns)},
    };
    return state;
}

QJsonValue orNull(std::optional<double> const& value) {
    return value ? QJsonValue(rounded(*value)) : QJsonValue(QJsonValue::Null);
}

QJsonArray lightsArray(LightMatrix const& lights) {
    QJsonArray array;
    for (LightColumn const& light : lights) {
        QJsonArray tables;
        std::transform(light.tableAlone.begin(), light.tableAlone.end(), std::back_inserter(tables), orNull);
        array.append(QJsonObject{{QStringLiteral("colour_temperature_K"), light.kelvin},
                                 {QStringLiteral("uncorrected_ab"), orNull(light.uncorrected)},
                                 {QStringLiteral("table_alone_ab"), tables},
                                 {QStringLiteral("blended_ab"), orNull(light.corrected)}});
    }
    return array;
}

QJsonArray registersArray(std::vector<SolutionRegister> const& registers) {
    QJsonArray array;
    for (SolutionRegister const& reg : registers)
        array.append(QJsonObject{{QStringLiteral("id"), double(reg.id)},
                                 {QStringLiteral("address"), double(reg.address)},
                                 {QStringLiteral("name"), reg.name},
                                 {QStringLiteral("value"), double(reg.value)}});
    return array;
}
} // namespace

QByteArray summaryJson(RunReport const& report) {
    QJsonObject root{{QStringLiteral("format"), QStringLiteral("pictara-summary-1")},
                     {QStringLiteral("run"), report.run},
                     {QStringLiteral("result"), report.result},
                     {QStringLiteral("cause"), report.cause},
                     {QStringLiteral("uncorrected"), stateObject(report.before)},
                     {QStringLiteral("corrected"), stateObject(report.after)},
                     {QStringLiteral("lights"), lightsArray(report.lights)},
                     {QStringLiteral("solution_registers"), registersArray(report.registers)}};
    for (FactTable const& table : report.tables) {
        QJsonObject facts;
        for (Fact const& fact : table.facts)
            facts[fact.key] = fact.value;
        root[table.key] = facts;
    }
    return QJsonDocument(root).toJson();
}
} // namespace pictara
