#include "tools/shading/table_file.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/report/certificate.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>

namespace shading {
namespace {
using simulator::MeasuredShading;
using simulator::Plane;

QJsonArray arrayOf(std::vector<double> const& values) {
    QJsonArray array;
    for (double const value : values)
        array.append(pictara::rounded(value));
    return array;
}

QJsonObject tableOf(MeasuredShading const& shading) {
    QJsonArray illuminants;
    for (auto const& illuminant : shading.illuminants)
        illuminants.append(QJsonObject{{"colour_temperature_K", illuminant.temperature},
                                       {"red", arrayOf(illuminant.gains[0])},
                                       {"green", arrayOf(illuminant.gains[1])},
                                       {"blue", arrayOf(illuminant.gains[2])}});
    return {{"format", "shading-gains-1"},
            {"name", shading.name},
            {"columns", int(shading.columns)},
            {"rows", int(shading.rows)},
            {"illuminants", illuminants}};
}

QJsonObject tuningOf(MeasuredShading const& shading) {
    constexpr simulator::SensorArray kGrid{.width = 16, .height = 12};
    QJsonArray lamps;
    for (auto const& illuminant : shading.illuminants) {
        auto const lens = simulator::measuredLens(shading, kGrid, illuminant.temperature);
        std::vector<double> red, green, blue;
        std::vector<float> row(kGrid.width);
        for (uint32_t y = 0; y < kGrid.height; ++y)
            for (auto const& [plane, gains] :
                 {std::pair(Plane::Red, &red), {Plane::GreenRed, &green}, {Plane::Blue, &blue}}) {
                lens(plane, y, row);
                for (float const response : row)
                    gains->push_back(1 / double(response));
            }
        for (size_t i = 0; i < green.size(); ++i) {
            red[i] /= green[i];
            blue[i] /= green[i];
        }
        for (auto* const values : {&red, &green, &blue})
            for (double const smallest = *std::min_element(values->begin(), values->end());
                 double& value : *values)
                value /= smallest;
        lamps.append(QJsonObject{{"colour_temperature_K", illuminant.temperature},
                                 {"red_over_green", arrayOf(red)},
                                 {"blue_over_green", arrayOf(blue)},
                                 {"luminance", arrayOf(green)}});
    }
    return {{"format", "shading-tuning-1"},
            {"columns", int(kGrid.width)},
            {"rows", int(kGrid.height)},
            {"lamps", lamps}};
}
} // namespace

QString TableFile::tuningName() const {
    QFileInfo const table(name);
    return table.dir().filePath(table.completeBaseName() + QStringLiteral(".tuning.json"));
}

bool TableFile::isReplaceable(QString* error) const {
    return files::isReplaceable(name, error) && (!hasTuning || files::isReplaceable(tuningName(), error));
}

bool TableFile::write(MeasuredShading const& shading, QString* error) const {
    auto const written = [&](QString const& file, QJsonObject const& root) {
        return files::replace(file, QJsonDocument(root).toJson(QJsonDocument::Compact), error);
    };
    return written(name, tableOf(shading)) && (!hasTuning || written(tuningName(), tuningOf(shading)));
}
} // namespace shading
