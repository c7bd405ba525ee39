#include "simulator/host/report/sitting.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/session.h"

#include <QFileInfo>
#include <QTemporaryDir>

namespace pictara {
namespace {
constexpr int kLongestName = 8; // bytes of a label that a record keeps

// A register of the solution; null when the camera has none there.
vy_RegisterDescription const* registerAt(simulator::SimulatedCamera const& camera, uint32_t id,
                                         uint32_t address) {
    return vy_FindRegisterAddr(camera.handle(), address, 0, id);
}

uint32_t valueOf(simulator::SimulatedCamera const& camera, uint32_t id, uint32_t address) {
    uint32_t value = 0;
    if (auto const* const place = registerAt(camera, id, address))
        (void)vy_ReadSensorReg(camera.handle(), place, &value);
    return value;
}

// The place of a register without a name.
QString nameOf(simulator::SimulatedCamera const& camera, uint32_t id, uint32_t address) {
    auto const* const place = registerAt(camera, id, address);
    return place && place->name ? QString::fromLocal8Bit(place->name)
                                : QStringLiteral("%1/0x%2").arg(id).arg(address, 4, 16, QLatin1Char('0'));
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
        auto const [id, address] = place;
        uint32_t const stored = valueOf(*started, id, address), held = valueOf(camera, id, address);
        if (stored != held)
            return QStringLiteral("by the record \"%1\" the register %2 starts with 0x%3 instead of 0x%4")
                .arg(record, nameOf(camera, id, address))
                .arg(stored, 4, 16, QLatin1Char('0'))
                .arg(held, 4, 16, QLatin1Char('0'));
    }
    return {};
}
} // namespace

Section sceneSection(Session& session) {
    simulator::CameraDescription const& camera = session.camera().description();
    simulator::Light const& light = session.camera().light();
    Options const& options = session.options();
    QString const lens = options.shadingFile.isEmpty() ? "of the profile" : options.shadingFile;
    Section section{"scene",
                    "Camera and light",
                    Layout::One,
                    {{"sensor", "sensor", {QString::fromLocal8Bit(camera.sensorName)}},
                     {"sensor_kind", "sensor kind", {int(camera.sensorKind)}},
                     {"sensor_variant", "sensor variant", {int(camera.variant)}},
                     {"width_px", "width", {int(camera.width)}, " pixels"},
                     {"height_px", "height", {int(camera.height)}, " pixels"},
                     {"profile", "profile", {camera.profile}}}};
    if (!camera.note.isEmpty())
        section.facts.push_back({"profile_note", "note", {camera.note}});
    section.facts.insert(section.facts.end(),
                         {{"lens", "lens", {lens}},
                          {"lamp_colour_temperature_K", "lamp", {light.colourTemperature}, " K"},
                          {"light_level_ratio", "level of the light", {light.level}},
                          {"light_gradient_ratio", "gradient of the light", {light.gradient}},
                          {"object_in_picture", "object in the picture", {light.objectInPicture}},
                          {"noise_seed", "seed", {double(options.seed)}}});
    return section;
}

Section registerSection(Session& session) {
    return {"registers",
            "Registers",
            Layout::One,
            {{"solution_registers_written",
              "registers of the solution written",
              {double(session.desk().listEntriesWritten())}},
             {"register_writes", "register writes in all", {double(session.camera().registerWrites())}},
             {"exposure_rows", "exposure", {double(session.frames().exposure())}, " rows"},
             {"relative_red_gain_thousandths",
              "relative red gain",
              {session.states().read("Relative Red Gain")},
              " / 1000"},
             {"relative_blue_gain_thousandths",
              "relative blue gain",
              {session.states().read("Relative Blue Gain")},
              " / 1000"},
             {"correction_is_on", "correction is on", {session.camera().isCorrecting()}}}};
}

Section solutionSection(Session& session) {
    HostAtWork const own; // looking names up is no call of the plug-in
    Section section{"solution_registers",
                    "Registers of the solution",
                    Layout::Rows,
                    {{"name", "name", {}},
                     {"id", "id", {}},
                     {"address", "address", {}, {}, Fact::kHexadecimal},
                     {"value", "value", {}, {}, Fact::kHexadecimal}}};
    for (auto const& [place, value] : session.desk().listEntries()) {
        auto const [id, address] = place;
        section.add({nameOf(session.camera(), id, address), double(id), double(address), double(value)});
    }
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
    QFileInfo const file(session.eepromFile());
    bool const isInFolder = file.absolutePath() == session.outputFolder();
    section.facts = {{"contents", "EEPROM", {contents}},
                     {"holds_solution", {}, {hasSolution ? QJsonValue(lack->isEmpty()) : QJsonValue()}},
                     {"file", "EEPROM file", {isInFolder ? file.fileName() : file.filePath()}},
                     {"operations", "EEPROM operations", {double(camera.deviceOperations())}},
                     {"written_bytes", "EEPROM bytes written", {double(camera.deviceBytesWritten())}}};
    if (auto const& fault = session.options().fault)
        section.facts.push_back({"fault", "EEPROM fault", {textOf(*fault)}});
    return section;
}
} // namespace pictara
