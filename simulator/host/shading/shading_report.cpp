#include "simulator/host/shading/shading_report.h"

#include "simulator/host/report/report_page.h"
#include "simulator/host/report/rounded_numbers.h"
#include "simulator/host/report/run_report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>
#include <set>

namespace pictara {
namespace {
constexpr char kRun[] = "shading";
constexpr uint32_t kColumns = 32;
constexpr uint32_t kRows = 24;

struct PlaneRow {
    simulator::Plane plane;
    char const* name;
};
constexpr PlaneRow kPlanes[] = {
    {simulator::Plane::Red, "red"}, {simulator::Plane::GreenRed, "green"}, {simulator::Plane::Blue, "blue"}};

// A plane of the tables at one light, on the common grid.
struct Comparison {
    double kelvin = 0;
    char const* plane = "";
    std::vector<std::vector<double>> gains; ///< of each table, the smallest one 1
    std::vector<double> difference;         ///< percent of the second above the first; empty for one table
};

std::vector<double> gainsOn(simulator::LensResponse const& lens, simulator::Plane plane) {
    std::vector<float> row(kColumns);
    std::vector<double> gains;
    for (uint32_t y = 0; y < kRows; ++y) {
        lens.row(plane, y, row);
        for (float const response : row)
            gains.push_back(1 / double(response));
    }
    double const smallest = *std::min_element(gains.begin(), gains.end());
    for (double& gain : gains)
        gain /= smallest;
    return gains;
}

Comparison compare(std::vector<NamedShading> const& tables, double kelvin, PlaneRow const& plane) {
    simulator::SensorArray const grid{.width = kColumns, .height = kRows};
    Comparison comparison{.kelvin = kelvin, .plane = plane.name, .gains = {}, .difference = {}};
    for (NamedShading const& table : tables)
        comparison.gains.push_back(
            gainsOn(simulator::MeasuredLens(table.shading, grid, kelvin), plane.plane));
    if (tables.size() == 2)
        for (size_t i = 0; i < comparison.gains[0].size(); ++i)
            comparison.difference.push_back(100 * (comparison.gains[1][i] / comparison.gains[0][i] - 1));
    return comparison;
}

std::vector<Comparison> compareAll(std::vector<NamedShading> const& tables) {
    std::set<double> lights;
    for (NamedShading const& table : tables)
        for (auto const& illuminant : table.shading.illuminants)
            lights.insert(illuminant.temperature);
    std::vector<Comparison> all;
    for (double const kelvin : lights)
        for (PlaneRow const& plane : kPlanes)
            all.push_back(compare(tables, kelvin, plane));
    return all;
}

// The value that is farthest from zero, with its sign.
double largest(std::vector<double> const& values) {
    double result = 0;
    for (double const value : values)
        result = std::abs(value) > std::abs(result) ? value : result;
    return result;
}

double rootMeanSquare(std::vector<double> const& values) {
    double sum = 0;
    for (double const value : values)
        sum += value * value / double(values.size());
    return std::sqrt(sum);
}

HeatMap mapOf(QString const& title, char const* unit, std::vector<double> const& values, bool isSigned,
              double end = 0) {
    return {.title = title,
            .unit = QString::fromLatin1(unit),
            .columns = int(kColumns),
            .rows = int(kRows),
            .values = values,
            .aspect = double(kColumns) / kRows,
            .isSigned = isSigned,
            .end = end};
}

void addFigures(ReportPage& page, std::vector<Comparison> const& all, bool areTwo) {
    std::vector<QStringList> rows{{QStringLiteral("plane and light"), QStringLiteral("A, largest gain")}};
    if (areTwo)
        rows[0] << QStringLiteral("B, largest gain") << QStringLiteral("B above (-: below) A, largest (%)")
                << QStringLiteral("difference, r.m.s. (%)");
    for (Comparison const& comparison : all) {
        QStringList row{
            QStringLiteral("%1, %2 K").arg(QLatin1String(comparison.plane)).arg(comparison.kelvin)};
        for (auto const& gains : comparison.gains)
            row << QString::number(largest(gains), 'f', 3);
        if (areTwo)
            row << QString::number(largest(comparison.difference), 'f', 2)
                << QString::number(rootMeanSquare(comparison.difference), 'f', 2);
        rows.push_back(row);
    }
    page.heading(QStringLiteral("Figures"));
    page.table(rows);
}

void addMaps(ReportPage& page, std::vector<Comparison> const& all) {
    for (Comparison const& comparison : all) {
        QString const place =
            QStringLiteral("%1, %2 K").arg(QLatin1String(comparison.plane)).arg(comparison.kelvin);
        page.heading(place);
        page.beginRow();
        for (size_t i = 0; i < comparison.gains.size(); ++i)
            page.chart(mapOf(QStringLiteral("%1: %2").arg(i == 0 ? "A" : "B", place), "gain",
                             comparison.gains[i], false,
                             std::max(largest(comparison.gains.front()), largest(comparison.gains.back()))));
        if (!comparison.difference.empty())
            page.chart(
                mapOf(QStringLiteral("B above (-: below) A: ") + place, "%", comparison.difference, true));
        page.endRow();
    }
}

QByteArray pageOf(std::vector<NamedShading> const& tables, std::vector<Comparison> const& all) {
    ReportPage page(tables.size() == 2 ? QStringLiteral("Lens shading: two tables side by side")
                                       : QStringLiteral("Lens shading: a measured table"));
    std::vector<QStringList> rows{
        {QString(), QStringLiteral("file"), QStringLiteral("lens"), QStringLiteral("grid")}};
    for (size_t i = 0; i < tables.size(); ++i)
        rows.push_back(
            {i == 0 ? QStringLiteral("A") : QStringLiteral("B"), tables[i].name, tables[i].shading.name,
             QStringLiteral("%1 x %2").arg(tables[i].shading.columns).arg(tables[i].shading.rows)});
    page.table(rows);
    page.paragraph(QStringLiteral("Gains that make each plane flat, brought to %1 x %2 cells; each plane's "
                                  "smallest gain is 1.")
                       .arg(kColumns)
                       .arg(kRows));
    addFigures(page, all, tables.size() == 2);
    if (hasCharts())
        addMaps(page, all);
    return page.finish();
}

QByteArray jsonOf(std::vector<NamedShading> const& tables, std::vector<Comparison> const& all) {
    QJsonArray files, planes;
    for (NamedShading const& table : tables)
        files.append(QJsonObject{{QStringLiteral("file"), table.name},
                                 {QStringLiteral("name"), table.shading.name},
                                 {QStringLiteral("columns"), int(table.shading.columns)},
                                 {QStringLiteral("rows"), int(table.shading.rows)}});
    for (Comparison const& comparison : all) {
        QJsonArray gains;
        for (auto const& table : comparison.gains)
            gains.append(rounded(largest(table)));
        QJsonObject plane{{QStringLiteral("colour_temperature_K"), comparison.kelvin},
                          {QStringLiteral("plane"), QString::fromLatin1(comparison.plane)},
                          {QStringLiteral("largest_gains"), gains}};
        if (!comparison.difference.empty()) {
            plane[QStringLiteral("largest_difference_percent")] = rounded(largest(comparison.difference));
            plane[QStringLiteral("rms_difference_percent")] = rounded(rootMeanSquare(comparison.difference));
        }
        planes.append(plane);
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("format"), QStringLiteral("pictara-summary-1")},
                                     {QStringLiteral("run"), QLatin1String(kRun)},
                                     {QStringLiteral("tables"), files},
                                     {QStringLiteral("planes"), planes}})
        .toJson();
}
} // namespace

QString writeShadingReport(std::vector<NamedShading> const& tables, OutputFolder& output) {
    QString const run = QLatin1String(kRun), page = resultName(run, "report.html");
    std::vector<Comparison> const all = compareAll(tables);
    output.saveBytes(page, pageOf(tables, all));
    output.saveBytes(resultName(run, "summary.json"), jsonOf(tables, all));
    return output.pathOf(page);
}
} // namespace pictara
