#include "simulator/camera/simulated_camera.h"

#include "simulator/camera/headboard_bus.h"
#include "simulator/camera/read_out.h"
#include "simulator/camera/shading_correction.h"
#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <algorithm>
#include <optional>
#include <utility>

namespace simulator {
struct SimulatedCamera::Implementation {
    explicit Implementation(Profile sensor) : profile(std::move(sensor)) {}

    /// Null, with a message in `error`, without an EEPROM.
    [[nodiscard]] EepromDevice* eeprom(QString* error);

    Profile profile;
    vy_Camera handle{profile};
    EepromDevice& device = handle.bus.device;
    ShadingCorrection correction{profile};
    uint32_t const exposureAtReset = std::max(1U, profile.exposure->value);
    std::optional<MeasuredShading> measuredShading;
    Light light;
    uint64_t seed = 1;
    uint64_t frameNumber = 0;
    Field field; ///< the light on the array; empty: to be computed
};

EepromDevice* SimulatedCamera::Implementation::eeprom(QString* error) {
    if (profile.eeprom.wiring != EepromWiring::None)
        return &device;
    *error = QStringLiteral("the camera has no EEPROM");
    return nullptr;
}

SimulatedCamera::SimulatedCamera(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}

SimulatedCamera::~SimulatedCamera() = default;

std::unique_ptr<SimulatedCamera> SimulatedCamera::open(QString const& profile, QString* error) {
    bool const isFile = profile.contains(QLatin1Char('/')) || profile.contains(QLatin1Char('\\')) ||
                        profile.endsWith(QLatin1String(".json"));
    QString const file = isFile ? profile : profileFolder().filePath(profile + QStringLiteral(".json"));
    // Whoever names a file is told what is wrong with it, and whoever names a profile which there are.
    if (!isFile && !QFileInfo::exists(file)) {
        *error = QStringLiteral("There is no camera profile \"%1\" (known: %2)")
                     .arg(profile, profileNames().join(QStringLiteral(", ")));
        return nullptr;
    }
    std::optional<Profile> sensor = readProfile(file, error);
    if (!sensor)
        return nullptr;
    return std::unique_ptr<SimulatedCamera>(
        new SimulatedCamera(std::make_unique<Implementation>(*std::move(sensor))));
}

QStringList SimulatedCamera::profileNames() {
    QStringList names;
    for (QString const& file : profileFolder().entryList({QStringLiteral("*.json")}, QDir::Files))
        names.append(QFileInfo(file).completeBaseName());
    names.sort(); // a name before the longer ones that begin with it
    return names;
}

QStringList SimulatedCamera::notedProfileNames() {
    constexpr int kWidth = 24; // of the names
    QStringList lines;
    for (QString const& name : profileNames()) {
        QString error; // a profile that cannot be opened is listed all the same
        auto const camera = open(name, &error);
        lines.append(name.leftJustified(kWidth) + (camera ? camera->description().summary : error));
    }
    return lines;
}

vy_Camera* SimulatedCamera::handle() const { return &m_implementation->handle; }
CameraDescription const& SimulatedCamera::description() const {
    return m_implementation->profile.description;
}
Light const& SimulatedCamera::light() const { return m_implementation->light; }
void SimulatedCamera::setSeed(uint64_t seed) { m_implementation->seed = seed; }

void SimulatedCamera::setLight(Light const& light) {
    Light const before = std::exchange(m_implementation->light, light);
    if (before.colourTemperature != light.colourTemperature || before.gradient != light.gradient ||
        before.objectInPicture != light.objectInPicture)
        m_implementation->field.clear();
}

bool SimulatedCamera::useMeasuredShading(QString const& file, QString* error) {
    std::optional<MeasuredShading> shading = readMeasuredShading(file, error);
    if (!shading)
        return false;
    m_implementation->measuredShading = std::move(shading);
    m_implementation->field.clear();
    return true;
}

Frame SimulatedCamera::grab() {
    Implementation& camera = *m_implementation;
    Profile const& profile = camera.profile;
    double const kelvin = camera.light.colourTemperature;
    if (camera.field.empty())
        camera.field =
            lightField(profile.array,
                       camera.measuredShading ? measuredLens(*camera.measuredShading, profile.array, kelvin)
                                              : analyticLens(profile.optics, profile.array, kelvin),
                       profile.optics.filters, camera.light);
    ++camera.frameNumber;
    profile.frameCounter->value = uint32_t(camera.frameNumber & 0xFFFF);
    double const exposure = double(profile.exposure->value) / camera.exposureAtReset;
    double const fullScale = kConverterWhite - profile.readOut.pedestal;
    double const level = std::max(0.0, camera.light.level);
    Exposing exposing{.array = profile.array,
                      .readOut = profile.readOut,
                      .light = camera.field,
                      .countsPerLight = profile.signalAtReset * fullScale * exposure * level,
                      .noiseStream = mixed(camera.seed) + (camera.frameNumber << 32)};
    // The light is looked at whether the correction is on or off, so that switching does not change it.
    if (camera.correction.dependsOnLight())
        camera.correction.look(centreRedToBlue(exposing));
    exposing.gains = camera.correction.gains();
    return exposeFrame(exposing);
}

bool SimulatedCamera::isCorrecting() const { return m_implementation->profile.correctionSwitch.isOn(); }
uint64_t SimulatedCamera::registerWrites() const { return m_implementation->profile.registers.writes(); }
bool SimulatedCamera::hasEeprom() const {
    return m_implementation->profile.eeprom.wiring != EepromWiring::None;
}

bool SimulatedCamera::loadEeprom(QString const& file, QString* error) {
    EepromDevice* const device = m_implementation->eeprom(error);
    std::optional<QByteArray> const bytes =
        device ? files::read(file, files::kMostText, error) : std::nullopt;
    if (bytes && bytes->size() == int(kEepromSize)) {
        std::copy(bytes->begin(), bytes->end(), device->contents().begin());
        return true;
    }
    if (bytes)
        *error = file + QString::asprintf(": the EEPROM has %zu bytes, the file has %d", size_t(kEepromSize),
                                          bytes->size());
    return false;
}

bool SimulatedCamera::saveEeprom(QString const& file, QString* error) const {
    return m_implementation->eeprom(error) && files::replace(file, eepromBytes(), error);
}

QByteArray SimulatedCamera::eepromBytes() const {
    EepromContents const& contents = m_implementation->device.contents();
    return hasEeprom() ? QByteArray(reinterpret_cast<char const*>(contents.data()), int(contents.size()))
                       : QByteArray();
}

std::vector<StoredRecord> SimulatedCamera::eepromRecords() const {
    return storedRecords(m_implementation->device.contents(), m_implementation->profile);
}

bool SimulatedCamera::replayEeprom(QString const& recordName, QString* error) {
    EepromDevice const* const device = m_implementation->eeprom(error);
    return device && replayRecord(device->contents(), recordName, m_implementation->profile, error);
}

void SimulatedCamera::useVirtualTime() { m_implementation->handle.bus.clock.useVirtualTime(); }

void SimulatedCamera::advanceTime(int milliseconds) {
    m_implementation->handle.bus.clock.advance(std::chrono::milliseconds(milliseconds));
}

QStringList SimulatedCamera::faultNames() { return deviceFaultNames(); }

bool SimulatedCamera::injectFault(QString const& name, uint64_t n, bool forEver) {
    int const fault = deviceFaultNames().indexOf(name);
    if (fault >= 0)
        m_implementation->device.plan({DeviceFault(fault), n, forEver});
    return fault >= 0;
}

uint64_t SimulatedCamera::deviceOperations() const { return m_implementation->device.operations(); }

uint64_t SimulatedCamera::deviceBytesWritten() const { return m_implementation->device.bytesWritten(); }
} // namespace simulator
