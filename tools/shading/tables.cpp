#include "tools/shading/tables.h"

#include "simulator/files/whole_file.h"
#include "tools/shading/commands.h"

#include <Eigen/Core>
#include <QJsonDocument>
#include <algorithm>
#include <cmath>
#include <set>

namespace shading {
namespace {
using pictara::Certificate;
using simulator::MeasuredShading;
using simulator::Plane;
using simulator::SensorArray;

// Tables may differ in grid and lights: all are told on one grid and at the lights of any, as a camera would
// that they are put before.
constexpr SensorArray kGrid{.width = 32, .height = 24};
constexpr SensorArray kTuningGrid{.width = 16, .height = 12};
constexpr std::pair<Plane, char const*> kPlanes[] = {
    {Plane::Red, "red"}, {Plane::GreenRed, "green"}, {Plane::Blue, "blue"}};

constexpr Column kTableColumns[] = {
    {"file", "file"}, {"name", "lens"}, {"columns", "columns"}, {"rows", "rows"}};
constexpr Column kGainColumns[] = {{"colour_temperature_K", "light", -1, " K"},
                                   {"plane", "plane"},
                                   {"largest_gain", "largest gain", 3},
                                   // Of two tables:
                                   {"second_largest_gain", "of the second", 3},
                                   {"largest_difference_percent", "second above first, largest %", 2},
                                   {"rms_difference_percent", "r.m.s. %", 2}};
constexpr size_t kOfOneTable = 3;

// What makes the plane flat at that light; the smallest gain is 1.
Eigen::ArrayXd flatGains(MeasuredShading const& shading, Plane plane, double kelvin,
                         SensorArray const& grid) {
    simulator::LensRows const lens = simulator::measuredLens(shading, grid, kelvin);
    Eigen::ArrayXXf response(grid.width, grid.height); // row by row
    for (uint32_t y = 0; y < grid.height; ++y)
        lens(plane, y, {response.col(y).data(), grid.width});
    Eigen::ArrayXd const gains = 1 / response.cast<double>().reshaped();
    return gains / gains.minCoeff();
}

QJsonArray arrayOf(auto const& values) {
    QJsonArray array;
    for (double const value : values)
        array.append(pictara::rounded(value));
    return array;
}

QJsonObject tableOf(MeasuredShading const& shading) {
    QJsonArray illuminants;
    for (auto const& [kelvin, gains] : shading.illuminants)
        illuminants.append(QJsonObject{{"colour_temperature_K", kelvin},
                                       {"red", arrayOf(gains[0])},
                                       {"green", arrayOf(gains[1])},
                                       {"blue", arrayOf(gains[2])}});
    return {{"format", "shading-gains-1"},
            {"name", shading.name},
            {"columns", int(shading.columns)},
            {"rows", int(shading.rows)},
            {"illuminants", illuminants}};
}

QJsonObject tuningOf(MeasuredShading const& shading) {
    QJsonArray lamps;
    for (auto const& illuminant : shading.illuminants) {
        double const kelvin = illuminant.temperature;
        Eigen::ArrayXd const green = flatGains(shading, Plane::GreenRed, kelvin, kTuningGrid);
        auto const overGreen = [&](Plane plane) {
            Eigen::ArrayXd const ratio = flatGains(shading, plane, kelvin, kTuningGrid) / green;
            return arrayOf(ratio / ratio.minCoeff());
        };
        lamps.append(QJsonObject{{"colour_temperature_K", kelvin},
                                 {"red_over_green", overGreen(Plane::Red)},
                                 {"blue_over_green", overGreen(Plane::Blue)},
                                 {"luminance", arrayOf(green)}});
    }
    return {{"format", "shading-tuning-1"},
            {"columns", int(kTuningGrid.width)},
            {"rows", int(kTuningGrid.height)},
            {"lamps", lamps}};
}

// At the table's first light, in the colours of its strongest plane.
void tellMaps(NamedShading const& table, Certificate& certificate) {
    double const kelvin = table.shading.illuminants.front().temperature;
    size_t const first = certificate.maps.size();
    double end = 1;
    for (auto const& [plane, name] : kPlanes) {
        QString const title = QStringLiteral("%1: %2, %3 K").arg(table.file, name).arg(kelvin);
        Eigen::ArrayXd const gains = flatGains(table.shading, plane, kelvin, kGrid);
        certificate.maps.push_back({title, {}, int(kGrid.width), {gains.begin(), gains.end()}, 1});
        end = std::max(end, gains.maxCoeff());
    }
    for (size_t i = first; i < certificate.maps.size(); ++i)
        certificate.maps[i].high = end;
}
} // namespace

bool writeTable(NamedShading const& table, QString const& tuningFile, QString* error) {
    auto const written = [&](QString const& file, QJsonObject const& root) {
        return files::replace(file, QJsonDocument(root).toJson(QJsonDocument::Compact), error);
    };
    return written(table.file, tableOf(table.shading)) &&
           (tuningFile.isEmpty() || written(tuningFile, tuningOf(table.shading)));
}

void tellTables(std::vector<NamedShading> const& tables, Certificate& certificate) {
    std::vector<QJsonArray> rows, planes;
    std::set<double> lights;
    for (auto const& [file, shading] : tables) {
        rows.push_back({file, shading.name, int(shading.columns), int(shading.rows)});
        for (auto const& illuminant : shading.illuminants)
            lights.insert(illuminant.temperature);
        tellMaps({file, shading}, certificate);
    }
    for (double const kelvin : lights)
        for (auto const& [plane, name] : kPlanes) {
            Eigen::ArrayXd const first = flatGains(tables.front().shading, plane, kelvin, kGrid),
                                 second = flatGains(tables.back().shading, plane, kelvin, kGrid),
                                 percent = 100 * (second / first - 1);
            Eigen::Index farthest = 0;
            percent.abs().maxCoeff(&farthest);
            planes.push_back({kelvin, name, first.maxCoeff(), second.maxCoeff(), percent(farthest),
                              std::sqrt(percent.square().mean())});
        }
    tell(certificate, "tables", "Tables", kTableColumns, rows);
    size_t const told = tables.size() == 2 ? std::size(kGainColumns) : kOfOneTable;
    tell(certificate, "planes", "Gains that make each plane flat", std::span(kGainColumns).first(told),
         planes);
}

std::optional<Certificate> compare(Request const& request, int* /*exitCode*/, QString* error) {
    std::vector<NamedShading> tables;
    for (QString const& file : request.files) {
        std::optional<MeasuredShading> const table = simulator::readMeasuredShading(file, error);
        if (!table)
            return std::nullopt;
        tables.push_back({file, *table});
    }
    Certificate certificate{{}, "compared"};
    tellTables(tables, certificate);
    return certificate;
}
} // namespace shading
