#include "simulator/host/run/measurement.h"

#include "simulator/host/session/session.h"

#include <QtDebug>
#include <algorithm>
#include <cmath>

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

// The figure of one table alone: the sensor is told that all others were made for redder lights than there
// are.
QJsonValue uniformityOfTable(size_t table, Session& session, DialogPage& page, RunDriver& driver) {
    std::vector<QByteArray> const& names = session.camera().description().tableTemperatures;
    std::vector<uint32_t> present;
    uint32_t unreal = 1; // kelvin
    for (size_t i = 0; i < names.size(); ++i) {
        present.push_back(session.registers().read(names[i].constData(), ""));
        session.setRegister(names[i], i == table ? uint32_t(names.size()) : unreal++);
    }
    QJsonValue const figure = uniformity(page, driver, true);
    for (size_t i = 0; i < names.size(); ++i)
        session.setRegister(names[i], present[i]);
    return figure;
}
} // namespace

EvennessStates measureEvenness(Session& session, DialogPage& page, RunDriver& driver) {
    EvennessStates states;
    for (size_t corrected = 0; corrected < states.size(); ++corrected) {
        QJsonValue const figure = uniformity(page, driver, corrected != 0);
        if (figure.isNull())
            continue;
        states[corrected] = Evenness{.uniformity = figure.toDouble(),
                                     .limit = page.text("GoodCU").toDouble(),
                                     .rating = page.colour("CU_Bullet"),
                                     .blocks = session.frames().blocks(),
                                     .picture = session.frames().unmarkedPicture()};
    }
    return states;
}

Section measureLights(Session& session, DialogPage& page, RunDriver& driver, std::vector<double> lights,
                      std::function<void(double kelvin)> const& onLight) {
    size_t const tables = session.camera().description().tableTemperatures.size();
    std::vector<Fact> facts{{"colour_temperature_K", "uniformity under the light of", {}, " K"},
                            {"uncorrected_ab", "no correction", {}, {}, 2}};
    for (size_t table = 1; table <= tables; ++table)
        facts.push_back({QStringLiteral("table_%1_alone_ab").arg(table),
                         QStringLiteral("table %1 alone").arg(table),
                         {},
                         {},
                         2});
    facts.push_back({"blended_ab", "blended tables", {}, {}, 2});
    std::sort(lights.begin(), lights.end());
    if (lights.size() >
        1) // what the eye and the sensors step by is the reciprocal; people name whole hundreds
        lights.push_back(100 * std::floor(2 / (1 / lights.rbegin()[1] + 1 / lights.back()) / 100));
    for (double const kelvin : lights) {
        onLight(kelvin);
        session.bringLamp(kelvin);
        std::vector<QJsonValue> figures(facts.size());
        figures.front() = kelvin;
        if (driver.adjustToLight()) {
            figures[1] = uniformity(page, driver, false);
            for (size_t table = 0; table < tables; ++table)
                figures[table + 2] = uniformityOfTable(table, session, page, driver);
            figures.back() = uniformity(page, driver, true);
        }
        for (size_t i = 0; i < facts.size(); ++i)
            facts[i].values.push_back(figures[i]);
    }
    return {"lights", "Each table under each light", Layout::Columns, facts};
}
} // namespace pictara
