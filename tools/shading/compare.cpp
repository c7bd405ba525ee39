#include "tools/shading/compare.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <set>

namespace shading {
namespace {
using namespace pictara;
using simulator::MeasuredShading;
using simulator::Plane;

// Tables may differ in grid and lights: all are brought to one grid and to the lights of any, as a camera
// would that they are put before.
constexpr simulator::SensorArray kGrid{.width = 32, .height = 24};
constexpr std::pair<Plane, char const*> kPlanes[] = {
    {Plane::Red, "red"}, {Plane::GreenRed, "green"}, {Plane::Blue, "blue"}};

// What makes the plane flat at that light; the smallest gain is 1.
std::vector<double> flatGains(MeasuredShading const& shading, Plane plane, double kelvin) {
    simulator::LensRows const lens = simulator::measuredLens(shading, kGrid, kelvin);
    std::vector<float> row(kGrid.width);
    std::vector<double> gains;
    for (uint32_t y = 0; y < kGrid.height; ++y) {
        lens(plane, y, row);
        for (float const response : row)
            gains.push_back(1 / double(response));
    }
    double const smallest = *std::min_element(gains.begin(), gains.end());
    for (double& gain : gains)
        gain /= smallest;
    return gains;
}

// How far the second gains lie above the first: the farthest, with its sign, and the root of the mean square.
std::pair<double, double> differenceOf(std::vector<double> const& first, std::vector<double> const& second) {
    double farthest = 0, squares = 0;
    for (size_t i = 0; i < first.size(); ++i) {
        double const difference = 100 * (second[i] / first[i] - 1);
        squares += difference * difference / double(first.size());
        farthest = std::abs(difference) > std::abs(farthest) ? difference : farthest;
    }
    return {farthest, std::sqrt(squares)};
}

// Each plane at each light of any table.
void tellPlanes(std::vector<NamedShading> const& tables, Certificate& certificate) {
    constexpr struct {
        char const* key;
        char const* head;
        int decimals;
    } kFigures[] = {{"largest_gain", "largest gain", 3},
                    {"second_largest_gain", "of the second", 3},
                    {"largest_difference_percent", "second above first, largest %", 2},
                    {"rms_difference_percent", "r.m.s. %", 2}};
    size_t const told = tables.size() == 2 ? std::size(kFigures) : 1;
    Table table{"Gains that make each plane flat", {{"light", "plane"}}};
    for (size_t i = 0; i < told; ++i)
        table.rows[0] << kFigures[i].head;
    QJsonArray planes;
    std::set<double> lights;
    for (NamedShading const& shading : tables)
        for (auto const& illuminant : shading.shading.illuminants)
            lights.insert(illuminant.temperature);
    for (double const kelvin : lights)
        for (auto const& [plane, name] : kPlanes) {
            std::vector<double> const first = flatGains(tables.front().shading, plane, kelvin),
                                      second = flatGains(tables.back().shading, plane, kelvin);
            auto const [farthest, rms] = differenceOf(first, second);
            double const figures[] = {largestOf(first), largestOf(second), farthest, rms};
            QStringList row{QStringLiteral("%1 K").arg(kelvin), name};
            QJsonObject object{{"colour_temperature_K", kelvin}, {"plane", name}};
            for (size_t i = 0; i < told; ++i) {
                row << QString::number(figures[i], 'f', kFigures[i].decimals);
                object[kFigures[i].key] = rounded(figures[i]);
            }
            table.rows.push_back(row);
            planes.append(object);
        }
    certificate.tables.push_back(table);
    certificate.figures["planes"] = planes;
}

// At the table's first light, in the colours of its strongest plane.
void tellMaps(NamedShading const& table, Certificate& certificate) {
    double const kelvin = table.shading.illuminants.front().temperature;
    size_t const first = certificate.maps.size();
    double end = 1;
    for (auto const& [plane, name] : kPlanes) {
        QString const title = QStringLiteral("%1: %2, %3 K").arg(table.file, name).arg(kelvin);
        certificate.maps.push_back({title, {}, int(kGrid.width), flatGains(table.shading, plane, kelvin), 1});
        end = std::max(end, largestOf(certificate.maps.back().values));
    }
    for (size_t i = first; i < certificate.maps.size(); ++i)
        certificate.maps[i].high = end;
}
} // namespace

Certificate tablesTold(std::vector<NamedShading> const& tables) {
    Certificate certificate{"shading", tables.size() == 2 ? "compared" : "measured"};
    Table told{"Tables", {{"file", "lens", "columns", "rows"}}};
    QJsonArray array;
    for (auto const& [file, shading] : tables) {
        int const columns = int(shading.columns), rows = int(shading.rows);
        told.rows.push_back({file, shading.name, QString::number(columns), QString::number(rows)});
        array.append(
            QJsonObject{{"file", file}, {"name", shading.name}, {"columns", columns}, {"rows", rows}});
    }
    certificate.tables.push_back(told);
    certificate.figures["tables"] = array;
    tellPlanes(tables, certificate);
    for (NamedShading const& table : tables)
        tellMaps(table, certificate);
    return certificate;
}

std::optional<Certificate> compare(QStringList const& files, QString* error) {
    std::vector<NamedShading> tables;
    for (QString const& file : files) {
        std::optional<MeasuredShading> const table = simulator::readMeasuredShading(file, error);
        if (!table)
            return std::nullopt;
        tables.push_back({file, *table});
    }
    return tablesTold(tables);
}
} // namespace shading
