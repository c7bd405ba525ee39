#include "simulator/host/report/run_report.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/session.h"

namespace pictara {
Fact::Fact(char const* name, char const* told, QJsonValue const& number, char const* unit)
    : key(QString::fromLatin1(name)), label(QString::fromLatin1(told)), value(number) {
    if (number.isBool())
        shown = number.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    else
        shown = QString::number(number.toDouble(), 'g', 10) + QString::fromLatin1(unit);
}

Fact::Fact(QString name, QString told, QString const& text)
    : key(std::move(name)), label(std::move(told)), value(text), shown(text) {}

FactTable sceneFacts(Scene const& scene) {
    simulator::CameraDescription const& camera = scene.camera;
    simulator::Light const& light = scene.light;
    auto const text = [](char const* key, char const* label, QString const& value) {
        return Fact(QString::fromLatin1(key), QString::fromLatin1(label), value);
    };
    FactTable table{
        QStringLiteral("scene"),
        QStringLiteral("Camera and light"),
        {
            text("sensor", "sensor", QString::fromLocal8Bit(camera.sensorName)),
            {"sensor_kind", "kind", int(camera.sensorKind)},
            {"sensor_variant", "variant", int(camera.variant)},
            {"width_px", "width", int(camera.width), " pixels"},
            {"height_px", "height", int(camera.height), " pixels"},
            text("profile", "profile", camera.profile),
            text("lens", "lens", scene.shading.isEmpty() ? QStringLiteral("of the profile") : scene.shading),
            {"lamp_colour_temperature_K", "lamp", light.colourTemperature, " K"},
            {"light_level_ratio", "level of the light", light.level},
            {"light_gradient_ratio", "gradient of the light", light.gradient},
            {"object_in_picture", "object in the picture", light.objectInPicture},
            {"noise_seed", "seed of the noise", double(scene.seed)},
        }};
    if (!camera.note.isEmpty())
        table.facts.push_back(text("profile_note", "note", camera.note));
    return table;
}

FactTable registerFacts(Session& session, uint64_t solutionRegisters, uint64_t registerWrites) {
    ViewingConditions const conditions = session.conditions();
    return {
        QStringLiteral("registers"),
        QStringLiteral("Registers"),
        {
            {"solution_registers_written", "registers of the solution written", double(solutionRegisters)},
            {"register_writes", "register writes in all", double(registerWrites)},
            {"exposure_rows", "exposure", double(conditions.exposure), " rows"},
            {"relative_red_gain_thousandths", "relative red gain (host)", conditions.redGain, " / 1000"},
            {"relative_blue_gain_thousandths", "relative blue gain (host)", conditions.blueGain, " / 1000"},
            {"correction_is_on", "correction is on", session.camera().isCorrecting()},
        }};
}

std::vector<SolutionRegister> solutionOf(Session& session) {
    HostAtWork const own; // looking names up is no call of the plug-in
    std::vector<SolutionRegister> registers;
    for (auto const& [place, value] : session.desk().listEntries()) {
        auto const [id, address] = place;
        vy_RegisterDescription const* const known =
            vy_FindRegisterAddr(session.camera().handle(), address, 0, id);
        QString const name = known && known->name ? QString::fromLocal8Bit(known->name) : QString();
        registers.push_back({id, address, name, value});
    }
    return registers;
}
} // namespace pictara
