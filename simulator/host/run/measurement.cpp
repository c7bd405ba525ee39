#include "simulator/host/run/measurement.h"

#include "simulator/host/session/session.h"

#include <QJsonArray>
#include <QRegularExpression>
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
    QJsonValue figure = uniformity(page, driver, true);
    for (size_t i = 0; i < names.size(); ++i)
        session.setRegister(names[i], present[i]);
    return figure;
}

// The figure and the picture that it is of.
std::optional<Evenness> evenness(Session& session, DialogPage& page, RunDriver& driver, bool corrected) {
    QJsonValue const figure = uniformity(page, driver, corrected);
    if (figure.isNull())
        return std::nullopt;
    return Evenness{.uniformity = figure.toDouble(),
                    .limit = page.text("GoodCU").toDouble(),
                    .rating = page.colour("CU_Bullet"),
                    .blocks = session.frames().blocks(),
                    .picture = session.frames().unmarkedPicture()};
}

QString shown(QJsonValue const& figure) {
    return figure.isNull() ? QStringLiteral("-") : QString::number(figure.toDouble(), 'f', 2);
}
} // namespace

EvennessStates measureEvenness(Session& session, DialogPage& page, RunDriver& driver) {
    auto before = evenness(session, page, driver, false);
    return {std::move(before), evenness(session, page, driver, true)};
}

void measureRepeatability(DialogPage& page, RunDriver& driver, Certificate& certificate) {
    constexpr size_t kFrames = 4;
    std::vector<double> figures{
        certificate.figures["corrected"].toObject()["dialog_colour_deviation_ab"].toDouble()};
    while (figures.size() < kFrames) {
        QJsonValue const figure = uniformity(page, driver, true);
        if (figure.isNull())
            return;
        figures.push_back(figure.toDouble());
    }
    tellRepeatability(figures, certificate);
}

LuminanceTarget targetOf(Session const& session, DialogPage const& page) {
    static QRegularExpression const percent(QStringLiteral("([0-9]+)"));
    auto const told = percent.match(page.text("FallOff"));
    return {told.hasMatch() ? std::optional(told.captured(1).toDouble() / 100) : std::nullopt,
            session.options().luminanceLimit};
}

bool measureLights(Session& session, DialogPage& page, RunDriver& driver, Certificate& certificate) {
    std::vector<double> lights;
    for (CaptureRow const& row : captureRows(page))
        lights.push_back(row.kelvin);
    if (lights.empty())
        return true;
    size_t const tables = session.camera().description().tableTemperatures.size();
    QStringList keys{"colour_temperature_K", "uncorrected_ab"}, head{"light", "no correction"};
    for (size_t table = 1; table <= tables; ++table) {
        keys << QStringLiteral("table_%1_alone_ab").arg(table);
        head << QStringLiteral("table %1 alone").arg(table);
    }
    keys << "blended_ab"
         << "verdict";
    head << "blended"
         << "verdict";
    Table table{"Colour uniformity under each light", {head}};
    QJsonArray told;
    std::sort(lights.begin(), lights.end());
    if (lights.size() > 1) // the eye and the sensors step by the reciprocal; people name whole hundreds
        lights.push_back(100 * std::floor(2 / (1 / lights.rbegin()[1] + 1 / lights.back()) / 100));
    bool isWhole = true;
    for (double const kelvin : lights) {
        ProgressReport::say(QStringLiteral("measuring each table under %1 K...").arg(kelvin));
        session.bringLamp(kelvin);
        QJsonArray figures;
        if (driver.adjustToLight()) {
            figures.append(uniformity(page, driver, false));
            for (size_t i = 0; i < tables; ++i)
                figures.append(uniformityOfTable(i, session, page, driver));
            figures.append(uniformity(page, driver, true));
        }
        Verdict const verdict = figures.isEmpty() || figures.last().isNull()
                                    ? Verdict::None
                                    : verdictOf(page.colour("CU_Bullet"));
        certificate.judge(verdict);
        QStringList row{QStringLiteral("%1 K").arg(kelvin)};
        QJsonObject light{{keys[0], kelvin}, {keys.last(), textOf(verdict)}};
        for (int i = 0; i < int(tables) + 2; ++i) {
            QJsonValue const figure = i < figures.size() ? figures[i] : QJsonValue();
            isWhole = isWhole && !figure.isNull();
            row << shown(figure);
            light[keys[i + 1]] = figure;
        }
        table.rows.push_back(row << textOf(verdict));
        told.append(light);
    }
    certificate.tables.push_back(table);
    certificate.figures["lights"] = told;
    return isWhole;
}
} // namespace pictara
