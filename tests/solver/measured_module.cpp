#include "tests/solver/measured_module.h"

#include "tests/measured_folder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>

namespace {

/// Catmull-Rom interpolation of four equidistant values.
double cubic(double const (&value)[4], double t) {
    return value[1] + 0.5 * t *
                          (value[2] - value[0] +
                           t * (2 * value[0] - 5 * value[1] + 4 * value[2] - value[3] +
                                t * (3 * (value[1] - value[2]) + value[3] - value[0])));
}

/// A row of values, continued linearly at both ends.
template <typename ValueAt>
double interpolate(int count, double position, ValueAt valueAt) {
    auto const extended = [&](int i) {
        if (i < 0)
            return valueAt(0) + i * (valueAt(1) - valueAt(0));
        if (i >= count)
            return valueAt(count - 1) + (i - count + 1) * (valueAt(count - 1) - valueAt(count - 2));
        return valueAt(i);
    };
    int const first = static_cast<int>(std::floor(position));
    double const values[4] = {extended(first - 1), extended(first), extended(first + 1), extended(first + 2)};
    return cubic(values, position - first);
}

std::vector<double> numbers(QJsonValue const& array) {
    std::vector<double> result;
    for (QJsonValue const& value : array.toArray())
        result.push_back(value.toDouble());
    return result;
}

} // namespace

Response MeasuredShading::response(TestSensor const& sensor) const {
    MeasuredShading const shading = *this;
    return [shading, sensor](Colour colour, double x, double y) {
        auto const at = [&](int column, int row) {
            return 1 / shading.gains[colour == kColourGreenBlue ? kColourGreen : colour]
                                    [static_cast<size_t>(row * shading.columns + column)];
        };
        double const column = x / sensor.width * shading.columns - 0.5;
        double const row = y / sensor.height * shading.rows - 0.5;
        return interpolate(shading.rows, row, [&](int i) {
            return interpolate(shading.columns, column, [&](int j) { return at(j, i); });
        });
    };
}

std::vector<MeasuredShading> measuredShadings() {
    std::vector<MeasuredShading> result;
    QDir const directory = measuredFolder();
    for (QString const& name : directory.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        QFile file(directory.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        QJsonObject const module = QJsonDocument::fromJson(file.readAll()).object();
        for (QJsonValue const& value : module[QStringLiteral("illuminants")].toArray()) {
            QJsonObject const light = value.toObject();
            result.push_back({module[QStringLiteral("name")].toString(),
                              light[QStringLiteral("colour_temperature_K")].toInt(),
                              module[QStringLiteral("columns")].toInt(),
                              module[QStringLiteral("rows")].toInt(),
                              {numbers(light[QStringLiteral("red")]), numbers(light[QStringLiteral("green")]),
                               numbers(light[QStringLiteral("blue")])}});
        }
    }
    return result;
}
