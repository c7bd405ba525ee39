#include "simulator/host/run/light_matrix.h"

#include "simulator/host/run/closing_measurement.h"
#include "simulator/host/session/session.h"

#include <QTextStream>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
// Tells the sensor that all its tables but one were made for redder lights than there are.
class OneTable {
public:
    OneTable(Session& session, std::vector<QByteArray> const& temperatures, size_t table)
        : m_session(session), m_names(temperatures) {
        uint32_t unreal = 1; // kelvin
        for (size_t i = 0; i < m_names.size(); ++i) {
            m_values.push_back(m_session.registers().read(m_names[i].constData(), ""));
            m_session.setRegister(m_names[i], i == table ? uint32_t(m_names.size()) : unreal++);
        }
    }
    ~OneTable() {
        for (size_t i = 0; i < m_names.size(); ++i)
            m_session.setRegister(m_names[i], m_values[i]);
    }
    OneTable(OneTable const&) = delete;
    OneTable& operator=(OneTable const&) = delete;

private:
    Session& m_session;
    std::vector<QByteArray> const& m_names;
    std::vector<uint32_t> m_values;
};

LightColumn measureLight(Session& session, DialogPage& page, RunDriver& driver, double kelvin) {
    auto const uniformity = [&](bool corrected) -> std::optional<double> {
        auto const evenness = measureEvenness(session, page, driver, corrected);
        return evenness ? std::optional(evenness->uniformity) : std::nullopt;
    };
    session.bringLamp(kelvin);
    LightColumn column;
    column.kelvin = kelvin;
    if (driver.runSteps(kExposure, kColourBalance).end != RunEnd::Finished)
        return column;
    column.uncorrected = uniformity(false);
    std::vector<QByteArray> const& temperatures = session.camera().description().tableTemperatures;
    for (size_t table = 0; table < temperatures.size(); ++table) {
        OneTable const alone(session, temperatures, table);
        column.tableAlone.push_back(uniformity(true));
    }
    column.corrected = uniformity(true);
    return column;
}

QString figure(std::optional<double> const& value) {
    return value ? QString::number(*value, 'f', 2) : QStringLiteral("-");
}
} // namespace

std::vector<double> lightsToTry(std::vector<double> lights) {
    std::sort(lights.begin(), lights.end());
    if (lights.size() >= 2) {
        // What the eye and the sensors step by is the reciprocal; people name whole hundreds.
        double const middle = 2 / (1 / lights[lights.size() - 2] + 1 / lights.back());
        lights.push_back(std::floor(middle / 100) * 100);
    }
    return lights;
}

LightMatrix measureLights(Session& session, DialogPage& page, RunDriver& driver,
                          std::vector<double> const& lights,
                          std::function<void(double kelvin)> const& onLight) {
    LightMatrix matrix;
    for (double const kelvin : lights) {
        onLight(kelvin);
        matrix.push_back(measureLight(session, page, driver, kelvin));
    }
    return matrix;
}

bool isComplete(LightMatrix const& matrix) {
    return std::all_of(matrix.begin(), matrix.end(), [](LightColumn const& column) {
        return column.uncorrected && column.corrected &&
               std::all_of(column.tableAlone.begin(), column.tableAlone.end(),
                           [](auto const& figure) { return figure.has_value(); });
    });
}

QString lightMatrixLines(LightMatrix const& matrix) {
    if (matrix.empty())
        return {};
    QString text;
    QTextStream out(&text);
    auto const line = [&](QString const& name, auto const& cellOf) {
        out << name.leftJustified(31);
        for (LightColumn const& column : matrix)
            out << ' ' << QString(cellOf(column)).rightJustified(7);
        out << '\n';
    };
    line(QStringLiteral("uniformity under the light of:"),
         [](LightColumn const& column) { return QString::number(column.kelvin) + QLatin1String(" K"); });
    line(QStringLiteral("no correction:"),
         [](LightColumn const& column) { return figure(column.uncorrected); });
    size_t tables = 0;
    for (LightColumn const& column : matrix)
        tables = std::max(tables, column.tableAlone.size());
    for (size_t table = 0; table < tables; ++table)
        line(QStringLiteral("table %1 alone:").arg(table + 1), [&](LightColumn const& column) {
            return figure(table < column.tableAlone.size() ? column.tableAlone[table] : std::nullopt);
        });
    line(QStringLiteral("blended tables:"),
         [](LightColumn const& column) { return figure(column.corrected); });
    return text;
}
} // namespace pictara
