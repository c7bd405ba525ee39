#include "simulator/host/run/measurement.h"

#include "simulator/host/session/session.h"

#include <QtDebug>
#include <algorithm>
#include <cmath>
#include <limits>

namespace pictara {
namespace {
// The test of the dialog switches the correction on; it measures with the next frame, so there is still time
// to switch it off. Null when the dialog shows no figure.
QJsonValue uniformity(DialogPage& page, RunDriver& driver, bool corrected) {
    if (!page.press("ColorUniformity"))
        return {};
    if (!corrected && page.isChecked("Enable_LC"))
        page.press("Enable_LC");
    if (page.isChecked("Enable_LC") != corrected) {
        qWarning("pictara: the dialog shows the lens correction %s", corrected ? "off" : "on");
        return {};
    }
    auto const figure = driver.awaitUniformity();
    return figure ? QJsonValue(*figure) : QJsonValue();
}
} // namespace

std::optional<Evenness> measureEvenness(Session& session, DialogPage& page, RunDriver& driver,
                                        bool corrected) {
    QJsonValue const figure = uniformity(page, driver, corrected);
    if (figure.isNull())
        return std::nullopt;
    bool isNumber = false;
    double const limit = page.text("GoodCU").toDouble(&isNumber);
    auto const skipped = int(session.camera().description().unusableRows);
    return Evenness{.uniformity = figure.toDouble(),
                    .limit = isNumber ? limit : std::numeric_limits<double>::quiet_NaN(),
                    .rating = page.colour("CU_Bullet"),
                    .blocks = measureBlocks(session.frames().light(), skipped),
                    .trueBlocks = measureBlocks(session.frames().idealLight(), skipped),
                    .picture = session.frames().unmarkedPicture()};
}

std::vector<double> lightsToTry(std::vector<double> lights) {
    std::sort(lights.begin(), lights.end());
    if (lights.size() >= 2) {
        // What the eye and the sensors step by is the reciprocal; people name whole hundreds.
        double const middle = 2 / (1 / lights[lights.size() - 2] + 1 / lights.back());
        lights.push_back(std::floor(middle / 100) * 100);
    }
    return lights;
}

Section measureLights(Session& session, DialogPage& page, RunDriver& driver,
                      std::vector<double> const& lights, std::function<void(double kelvin)> const& onLight) {
    std::vector<QByteArray> const& temperatures = session.camera().description().tableTemperatures;
    size_t const tables = temperatures.size();
    std::vector<Fact> facts(tables + 3, {{}, {}, {}, {}, 2});
    auto const name = [&](size_t i, QString const& key, QString const& label) {
        facts[i].key = key;
        facts[i].label = label;
    };
    facts[0] = {"colour_temperature_K", "uniformity under the light of", {}, " K"};
    name(1, "uncorrected_ab", "no correction");
    for (size_t table = 1; table <= tables; ++table)
        name(table + 1, QStringLiteral("table_%1_alone_ab").arg(table),
             QStringLiteral("table %1 alone").arg(table));
    name(tables + 2, "blended_ab", "blended tables");
    for (double const kelvin : lights) {
        onLight(kelvin);
        session.bringLamp(kelvin);
        bool const isSet = driver.adjustToLight();
        auto const measure = [&](bool corrected) {
            return isSet ? uniformity(page, driver, corrected) : QJsonValue();
        };
        facts[0].values.push_back(kelvin);
        facts[1].values.push_back(measure(false));
        for (size_t table = 0; table < tables; ++table) {
            // All the others were made for redder lights than there are.
            std::vector<uint32_t> held;
            for (uint32_t i = 0, unreal = 1; i < tables; ++i) {
                held.push_back(session.registers().read(temperatures[i].constData(), ""));
                session.setRegister(temperatures[i], i == table ? uint32_t(tables) : unreal++);
            }
            facts[table + 2].values.push_back(measure(true));
            for (size_t i = 0; i < tables; ++i)
                session.setRegister(temperatures[i], held[i]);
        }
        facts.back().values.push_back(measure(true));
    }
    return {"lights", "Each table under each light", Layout::Columns, facts};
}
} // namespace pictara
