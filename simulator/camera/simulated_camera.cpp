#include "simulator/camera/simulated_camera.h"

#include "simulator/camera/camera_handle.h"
#include "simulator/camera/illuminant.h"
#include "simulator/camera/measured_shading.h"
#include "simulator/camera/read_out.h"
#include "simulator/camera/shading_correction.h"
#include "simulator/camera/stored_records.h"

#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <optional>
#include <utility>

namespace simulator {
namespace {
QString profileFile(QString const& profile) {
    bool const isFile = profile.contains(QLatin1Char('/')) || profile.contains(QLatin1Char('\\')) ||
                        profile.endsWith(QLatin1String(".json"));
    return isFile ? profile : profileFolder().filePath(profile + QStringLiteral(".json"));
}
} // namespace

class SimulatedCamera::Implementation {
public:
    explicit Implementation(Profile sensor)
        : profile(std::move(sensor)), handle(profile), correction(profile, handle.registers),
          exposureRegister(handle.registers.find(profile.exposure.reg.constData())),
          frameCounter(handle.registers.find(profile.frameCounter.constData())),
          exposureAtReset(std::max(1U, exposureRegister->value)) {
        if (profile.tableChoice)
            illuminant.emplace(profile.optics.filters,
                               *handle.registers.find(profile.tableChoice->estimate.constData()));
    }

    [[nodiscard]] Field const& lightOnTheArray();
    [[nodiscard]] Exposing exposing();
    [[nodiscard]] Field const* gains();
    /// Null, with a message in `error`, without an EEPROM.
    [[nodiscard]] EepromDevice* device(QString* error);

    Profile const profile;
    vy_Camera handle;
    ShadingCorrection correction;
    std::optional<IlluminantEstimate> illuminant; ///< where the correction depends on the light
    RegisterMap::Register const* const exposureRegister;
    RegisterMap::Register* const frameCounter;
    uint32_t const exposureAtReset;
    std::optional<MeasuredShading> measuredShading;
    Light light;
    uint64_t seed = 1;
    uint64_t frameNumber = 0;
    Field field; ///< empty: to be computed
};

Field const& SimulatedCamera::Implementation::lightOnTheArray() {
    if (!field.empty())
        return field;
    auto const through = [&](LensResponse const& lens) {
        return lightField(profile.array, lens, profile.optics.filters, light);
    };
    field = measuredShading ? through(MeasuredLens(*measuredShading, profile.array, light.colourTemperature))
                            : through(AnalyticLens(profile.optics, profile.array, light.colourTemperature));
    return field;
}

Exposing SimulatedCamera::Implementation::exposing() {
    double const exposure = double(exposureRegister->value) / exposureAtReset;
    double const fullScale = kConverterWhite - profile.readOut.pedestal;
    return {
        .light = lightOnTheArray(),
        .countsPerLight = profile.exposure.signalAtReset * fullScale * exposure * std::max(0.0, light.level),
    };
}

Field const* SimulatedCamera::Implementation::gains() {
    return correction.isOn() ? &correction.gains(illuminant ? illuminant->kelvin() : 0) : nullptr;
}

EepromDevice* SimulatedCamera::Implementation::device(QString* error) {
    if (!handle.bus.device())
        *error = QStringLiteral("the camera has no EEPROM");
    return handle.bus.device();
}

SimulatedCamera::SimulatedCamera(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}

SimulatedCamera::~SimulatedCamera() = default;

std::unique_ptr<SimulatedCamera> SimulatedCamera::open(QString const& profile, QString* error) {
    QString const file = profileFile(profile);
    // Whoever names a file is told what is wrong with it, and whoever names a profile which there are.
    if (!QFileInfo::exists(file) && profile != file) {
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
        QString line = name.leftJustified(kWidth) + (camera ? camera->description().summary : error);
        if (camera && !camera->description().note.isEmpty())
            line += QStringLiteral("; ") + camera->description().note;
        lines.append(line);
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
    ++camera.frameNumber;
    camera.frameCounter->value = uint32_t(camera.frameNumber & 0xFFFF);
    uint64_t const stream = mixed(camera.seed) + (camera.frameNumber << 32);
    Exposing exposed = camera.exposing();
    exposed.noiseStream = stream;
    // The light is looked at whether the correction is on or off, so that switching does not change it.
    if (camera.illuminant)
        camera.illuminant->update(centreRedToBlue(profile.array, profile.readOut, exposed));
    exposed.gains = camera.gains();
    Frame frame =
        deliveredFrame(profile.array, profile.readOut, exposeMosaic(profile.array, profile.readOut, exposed));
    spoilUnusableRows(frame, profile.description.unusableRows, stream);
    return frame;
}

IdealFrame SimulatedCamera::idealFrame() const {
    Profile const& profile = m_implementation->profile;
    Exposing exposed = m_implementation->exposing();
    exposed.gains = m_implementation->gains();
    return {profile.array.width, profile.array.height, exposeIdeal(profile.array, profile.readOut, exposed)};
}

bool SimulatedCamera::isCorrecting() const { return m_implementation->correction.isOn(); }
uint64_t SimulatedCamera::registerWrites() const { return m_implementation->handle.registers.writes(); }
bool SimulatedCamera::hasEeprom() const { return m_implementation->handle.bus.device() != nullptr; }

bool SimulatedCamera::loadEeprom(QString const& file, QString* error) {
    EepromDevice* const device = m_implementation->device(error);
    std::optional<EepromContents> const contents = device ? readContents(file, error) : std::nullopt;
    if (contents)
        device->contents() = *contents;
    return contents.has_value();
}

bool SimulatedCamera::saveEeprom(QString const& file, QString* error) const {
    EepromDevice const* const device = m_implementation->device(error);
    return device && writeContents(device->contents(), file, error);
}

QByteArray SimulatedCamera::eepromBytes() const {
    EepromDevice const* const device = m_implementation->handle.bus.device();
    return device ? QByteArray(reinterpret_cast<char const*>(device->contents().data()),
                               int(device->contents().size()))
                  : QByteArray();
}

std::vector<StoredRecord> SimulatedCamera::eepromRecords() const {
    EepromDevice const* const device = m_implementation->handle.bus.device();
    return device ? storedRecords(device->contents(), m_implementation->profile.registerAddressWidth,
                                  m_implementation->handle.registers)
                  : std::vector<StoredRecord>();
}

bool SimulatedCamera::replayEeprom(QString const& recordName, QString* error) {
    EepromDevice const* const device = m_implementation->device(error);
    return device &&
           replayRecord(device->contents(), recordName, m_implementation->profile.registerAddressWidth,
                        m_implementation->handle.registers, error);
}

void SimulatedCamera::useVirtualTime() { m_implementation->handle.bus.clock().useVirtualTime(); }

void SimulatedCamera::advanceTime(int milliseconds) {
    m_implementation->handle.bus.clock().advance(std::chrono::milliseconds(milliseconds));
}

QStringList SimulatedCamera::faultNames() { return deviceFaultNames(); }

bool SimulatedCamera::injectFault(QString const& name, uint64_t n, bool forEver) {
    int const fault = deviceFaultNames().indexOf(name);
    EepromDevice* const device = m_implementation->handle.bus.device();
    if (fault >= 0 && device)
        device->plan({DeviceFault(fault), n, forEver});
    return fault >= 0;
}

uint64_t SimulatedCamera::deviceOperations() const {
    EepromDevice const* const device = m_implementation->handle.bus.device();
    return device ? device->operations() : 0;
}

uint64_t SimulatedCamera::deviceBytesWritten() const {
    EepromDevice const* const device = m_implementation->handle.bus.device();
    return device ? device->bytesWritten() : 0;
}
} // namespace simulator
