#include "simulator/host/report/sitting.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/session.h"

#include <QDir>
#include <QTemporaryDir>

namespace pictara {
namespace {
using RegisterPlace = std::pair<uint32_t, uint32_t>; // id and address

constexpr int kLongestName = 8; // bytes of a label that a record keeps

QString hexadecimal(uint32_t number) { return QStringLiteral("0x%1").arg(number, 4, 16, QLatin1Char('0')); }

// A register of the solution; null when the camera has none there.
vy_RegisterDescription const* registerAt(simulator::SimulatedCamera const& camera, RegisterPlace place) {
    return vy_FindRegisterAddr(camera.handle(), place.second, 0, place.first);
}

uint32_t valueOf(simulator::SimulatedCamera const& camera, RegisterPlace place) {
    uint32_t value = 0;
    if (auto const* const found = registerAt(camera, place))
        (void)vy_ReadSensorReg(camera.handle(), found, &value);
    return value;
}

// Why a camera that starts up from the EEPROM does not hold what the registers of this one hold.
QString lackOf(Session& session, QString const& label) {
    QTemporaryDir const folder;
    QString const bytes = folder.filePath(QStringLiteral("eeprom.bin"));
    QString const record = QString::fromLocal8Bit(label.toLocal8Bit().left(kLongestName));
    simulator::SimulatedCamera const& camera = session.camera();
    QString error;
    auto const started = simulator::SimulatedCamera::open(session.options().profile, &error);
    if (!started || !camera.saveEeprom(bytes, &error) || !started->loadEeprom(bytes, &error) ||
        !started->replayEeprom(record, &error))
        return error;
    if (!started->isCorrecting())
        return QStringLiteral("the record \"%1\" leaves the correction off").arg(record);
    for (auto const& [place, written] : session.desk().listEntries()) {
        uint32_t const stored = valueOf(*started, place), held = valueOf(camera, place);
        if (stored != held)
            return QStringLiteral("by the record \"%1\" the register %2 starts with %3 instead of %4")
                .arg(record, QString::fromLocal8Bit(registerAt(camera, place)->name), hexadecimal(stored),
                     hexadecimal(held));
    }
    return {};
}
} // namespace

Section sceneSection(Session& session) {
    simulator::CameraDescription const& camera = session.camera().description();
    simulator::Light const& light = session.camera().light();
    Options const& options = session.options();
    QString const lens = options.shadingFile.isEmpty() ? "of the profile" : options.shadingFile;
    Section section{"scene", "Camera and light"};
    section.facts = {{"sensor", "sensor", {QString::fromLocal8Bit(camera.sensorName)}},
                     {"sensor_kind", "sensor kind", {int(camera.sensorKind)}},
                     {"sensor_variant", "sensor variant", {int(camera.variant)}},
                     {"width_px", "width", {int(camera.width)}, " pixels"},
                     {"height_px", "height", {int(camera.height)}, " pixels"},
                     {"profile", "profile", {camera.profile}},
                     {"lens", "lens", {lens}},
                     {"lamp_colour_temperature_K", "lamp", {light.colourTemperature}, " K"},
                     {"light_level_ratio", "level of the light", {light.level}},
                     {"light_gradient_ratio", "gradient of the light", {light.gradient}},
                     {"object_in_picture", "object in the picture", {light.objectInPicture}},
                     {"noise_seed", "seed", {double(options.seed)}}};
    return section;
}

Section registerSection(Session& session) {
    double const ofSolution = double(session.desk().listEntriesWritten());
    int const red = session.states().read("Relative Red Gain"),
              blue = session.states().read("Relative Blue Gain");
    Section section{"registers", "Registers"};
    section.facts = {
        {"solution_registers_written", "registers of the solution written", {ofSolution}},
        {"register_writes", "register writes in all", {double(session.camera().registerWrites())}},
        {"exposure_rows", "exposure", {double(session.frames().exposure())}, " rows"},
        {"relative_red_gain_thousandths", "relative red gain", {red}, " / 1000"},
        {"relative_blue_gain_thousandths", "relative blue gain", {blue}, " / 1000"},
        {"correction_is_on", "correction is on", {session.camera().isCorrecting()}}};
    return section;
}

Section eepromSection(Session& session, QString const& label, QString* lack) {
    lack->clear();
    Section section{"eeprom", "EEPROM"};
    simulator::SimulatedCamera const& camera = session.camera();
    if (!camera.hasEeprom()) {
        section.facts = {{"contents", "EEPROM", {"none"}}};
        return section;
    }
    HostAtWork const own; // looking registers up is no call of the plug-in
    bool const hasSolution = session.desk().listEntriesWritten() > 0;
    if (hasSolution)
        *lack = lackOf(session, label);
    QString const contents = !hasSolution      ? QStringLiteral("nothing was saved, there is no solution")
                             : lack->isEmpty() ? QStringLiteral("holds the solution")
                                               : QStringLiteral("does not hold the solution: ") + *lack;
    section.facts = {
        {"contents", "EEPROM", {contents}},
        {"holds_solution", {}, {hasSolution ? QJsonValue(lack->isEmpty()) : QJsonValue()}},
        {"file", "EEPROM file", {QDir(session.outputFolder()).relativeFilePath(session.eepromFile())}},
        {"operations", "EEPROM operations", {double(camera.deviceOperations())}},
        {"written_bytes", "EEPROM bytes written", {double(camera.deviceBytesWritten())}}};
    if (auto const& fault = session.options().fault)
        section.facts.push_back({"fault", "EEPROM fault", {textOf(*fault)}});
    return section;
}
} // namespace pictara
