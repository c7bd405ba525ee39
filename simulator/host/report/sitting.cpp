#include "simulator/host/report/sitting.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/session.h"

#include <QDateTime>
#include <QDir>
#include <QJsonObject>
#include <QTemporaryDir>
#include <iterator>

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
    if (!folder.isValid())
        return QStringLiteral("it could not be compared, there is no place for temporary files");
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
// The number that the configuration page stored, past the bus.
QString serialNumberOf(simulator::SimulatedCamera const& camera) {
    for (simulator::StoredRecord const& record : camera.eepromRecords())
        if (record.typeName == QLatin1String("Headboard ID") && record.fault.isEmpty())
            return record.text;
    return {};
}

QJsonObject sceneOf(Session& session) {
    simulator::CameraDescription const& camera = session.camera().description();
    simulator::Light const& light = session.camera().light();
    Options const& options = session.options();
    return {{"sensor", QString::fromLocal8Bit(camera.sensorName)},
            {"sensor_kind", int(camera.sensorKind)},
            {"sensor_variant", int(camera.variant)},
            {"width_px", int(camera.width)},
            {"height_px", int(camera.height)},
            {"profile", camera.profile},
            {"lens", options.shadingFile.isEmpty() ? QStringLiteral("of the profile") : options.shadingFile},
            {"lamp_colour_temperature_K", light.colourTemperature},
            {"light_level_ratio", light.level},
            {"light_gradient_ratio", light.gradient},
            {"object_in_picture", light.objectInPicture},
            {"noise_seed", double(options.seed)}};
}

QJsonObject registersOf(Session& session) {
    return {{"solution_registers_written", double(session.desk().listEntriesWritten())},
            {"register_writes", double(session.camera().registerWrites())},
            {"exposure_rows", double(session.frames().exposure())},
            {"relative_red_gain_thousandths", session.states().read("Relative Red Gain")},
            {"relative_blue_gain_thousandths", session.states().read("Relative Blue Gain")},
            {"correction_is_on", session.camera().isCorrecting()}};
}

QJsonObject eepromOf(Session& session, QString const& label, QString* lack) {
    simulator::SimulatedCamera const& camera = session.camera();
    QString const replayed = session.options().replayFile;
    if (!replayed.isEmpty())
        return {{"contents", QStringLiteral("%1, replayed").arg(replayed)},
                {"file", replayed},
                {"replayed_register_writes", double(session.replayedWrites())}};
    if (!camera.hasEeprom())
        return {{"contents", "none"}};
    HostAtWork const own; // looking registers up is no call of the plug-in
    bool const hasSolution = session.desk().listEntriesWritten() > 0;
    if (hasSolution)
        *lack = lackOf(session, label);
    QString const contents = !hasSolution      ? QStringLiteral("not compared, there is no solution")
                             : lack->isEmpty() ? QStringLiteral("holds the solution")
                                               : QStringLiteral("does not hold the solution: ") + *lack;
    QJsonObject eeprom{{"contents", contents},
                       {"holds_solution", hasSolution ? QJsonValue(lack->isEmpty()) : QJsonValue()},
                       {"file", QDir(session.outputFolder()).relativeFilePath(session.eepromFile())},
                       {"operations", double(camera.deviceOperations())},
                       {"written_bytes", double(camera.deviceBytesWritten())}};
    if (auto const& fault = session.options().fault)
        eeprom["fault"] = textOf(*fault);
    return eeprom;
}
} // namespace

QString tellSitting(Session& session, QString const& label, std::vector<double> const& lamps,
                    Certificate& certificate) {
    QString lack;
    QJsonObject const scene = sceneOf(session), eeprom = eepromOf(session, label, &lack);
    QDateTime const now = QDateTime::currentDateTime(); // told with its distance from UTC
    QString const date = now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODate),
                  serial = serialNumberOf(session.camera());
    QStringList lights;
    for (double const kelvin : lamps)
        lights << QString::number(kelvin);
    certificate.figures["scene"] = scene;
    certificate.figures["registers"] = registersOf(session);
    certificate.figures["eeprom"] = eeprom;
    certificate.figures["board"] =
        QJsonObject{{"serial_number", serial},      {"date", date},
                    {"sensor", scene["sensor"]},    {"label", label},
                    {"lights_K", lights.join(' ')}, {"eeprom", eeprom["contents"]}};
    QString const sensor =
        QStringLiteral("%1, kind %2, %3 x %4 pixels")
            .arg(scene["sensor"].toString(), QString::number(scene["sensor_kind"].toInt()),
                 QString::number(scene["width_px"].toInt()), QString::number(scene["height_px"].toInt()));
    QString const simulated = QStringLiteral("profile %1, lens %2, seed %3")
                                  .arg(scene["profile"].toString(), scene["lens"].toString(),
                                       QString::number(session.options().seed));
    std::pair<QString, QString> const facts[] = {
        {"Sensor", sensor},
        {"Serial number", serial},
        {"EEPROM", eeprom["contents"].toString()},
        {"EEPROM label", label},
        {lights.size() > 1 ? "Lamps" : "Lamp", lights.join(", ") + " K"},
        {"Date", QString(date).replace('T', ' ')},
        {"Simulated", simulated}};
    certificate.facts.insert(certificate.facts.end(), std::begin(facts), std::end(facts));
    return lack;
}
} // namespace pictara
