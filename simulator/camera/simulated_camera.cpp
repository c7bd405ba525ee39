#include "simulator/camera/simulated_camera.h"
#include "simulator/camera/camera_handle.h"
#include "simulator/camera/illuminant.h"
#include "simulator/camera/illuminant_estimate.h"
#include "simulator/camera/installed_files.h"
#include "simulator/camera/light_field.h"
#include "simulator/camera/measured_shading.h"
#include "simulator/camera/noise.h"
#include "simulator/camera/read_out.h"
#include "simulator/camera/shading_correction.h"
#include "simulator/camera/start_up_record.h"
#include "simulator/camera/stored_records.h"
#include "simulator/camera/ycbcr_pipeline.h"

#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <optional>

namespace simulator {
namespace {
QString profileFile(QString const& profile) {
    bool const isFile = profile.contains(QLatin1Char('/')) || profile.contains(QLatin1Char('\\')) ||
                        profile.endsWith(QLatin1String(".json"));
    return isFile ? profile : profileFolder().filePath(profile + QStringLiteral(".json"));
}

FrameType frameType(OutputFormat format) {
    switch (format) {
    case OutputFormat::Raw12:
        return FrameType::Raw12;
    case OutputFormat::Raw8:
        return FrameType::Raw8;
    case OutputFormat::Ycbcr:
        break;
    }
    return FrameType::Ycbcr;
}

EepromDevice* deviceOrMessage(vy_Camera& camera, QString* error) {
    EepromDevice* const device = camera.bus.device();
    if (!device)
        *error = QStringLiteral("the camera has no EEPROM");
    return device;
}

CameraDescription describe(Profile const& profile) {
    CameraDescription description;
    description.profile = profile.name;
    description.sensorName = profile.sensorName;
    description.fileNamePart = profile.fileNamePart;
    description.note = profile.note;
    description.sensorKind = profile.kind;
    description.variant = profile.variant;
    description.systemOnChip = profile.systemOnChip;
    description.width = profile.array.width;
    description.height = profile.array.height;
    description.rawType = frameType(profile.readOut.format);
    description.calibratesFromRgb = profile.layout.input == QLatin1String("rgb32");
    description.bayerPhase = profile.array.deliveredPhase();
    description.orientation = profile.array.orientation;
    description.unusableRows = profile.readOut.unusableRows;
    description.blackLevel = profile.readOut.deliveredBlack();
    description.whiteLevel = profile.readOut.deliveredWhite();
    if (profile.tableChoice)
        description.tableTemperatures.assign(profile.tableChoice->temperatures.begin(),
                                             profile.tableChoice->temperatures.end());
    std::copy(profile.optics.colourMatrix.begin(), profile.optics.colourMatrix.end(),
              description.colourMatrix);
    return description;
}
} // namespace

class SimulatedCamera::Implementation {
public:
    explicit Implementation(Profile sensor)
        : profile(std::move(sensor)), description(describe(profile)), handle(profile),
          correction(profile, handle.registers),
          exposureRegister(handle.registers.find(profile.exposure.reg.constData())),
          frameCounter(handle.registers.find(profile.frameCounter.constData())),
          exposureAtReset(std::max(1U, exposureRegister->value)) {
        if (profile.tableChoice)
            illuminant.emplace(profile.optics.filters,
                               *handle.registers.find(profile.tableChoice->estimate.constData()));
    }

    void setLight(Light const& changed);
    [[nodiscard]] Field const& lightOnTheArray();
    [[nodiscard]] Frame grab();
    [[nodiscard]] IdealFrame idealFrame();
    [[nodiscard]] Exposing exposing();
    [[nodiscard]] Field const* gains();
    [[nodiscard]] bool replay(QString const& recordName, QString* error);

    Profile const profile;
    CameraDescription const description;
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

void SimulatedCamera::Implementation::setLight(Light const& changed) {
    bool const sameField = changed.colourTemperature == light.colourTemperature &&
                           changed.gradient == light.gradient &&
                           changed.objectInPicture == light.objectInPicture;
    light = changed;
    if (!sameField)
        field.clear();
}

Field const& SimulatedCamera::Implementation::lightOnTheArray() {
    if (!field.empty())
        return field;
    std::array<double, 3> const colour = illuminantResponse(profile.optics.filters, light.colourTemperature);
    if (measuredShading)
        field =
            lightField(profile.array, MeasuredLens(*measuredShading, profile.array, light.colourTemperature),
                       colour, light);
    else
        field =
            lightField(profile.array, AnalyticLens(profile.optics, profile.array, light.colourTemperature),
                       colour, light);
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

Frame SimulatedCamera::Implementation::grab() {
    ++frameNumber;
    frameCounter->value = uint32_t(frameNumber & 0xFFFF);
    uint64_t const stream = mixed(seed) + (frameNumber << 32);
    Exposing exposed = exposing();
    exposed.noiseStream = stream;
    // The light is looked at whether the correction is on or off, so that switching does not change it.
    if (illuminant)
        illuminant->update(centreRedToBlue(profile.array, profile.readOut, exposed));
    exposed.gains = gains();
    Mosaic const mosaic = exposeMosaic(profile.array, profile.readOut, exposed);
    Frame frame = profile.readOut.format == OutputFormat::Ycbcr
                      ? ycbcrFrame(profile.array, profile.readOut, mosaic)
                      : rawFrame(profile.array, profile.readOut, mosaic);
    spoilUnusableRows(frame, profile.readOut.unusableRows, stream);
    return frame;
}

IdealFrame SimulatedCamera::Implementation::idealFrame() {
    Exposing exposed = exposing();
    exposed.gains = gains();
    return {profile.array.width, profile.array.height, exposeIdeal(profile.array, profile.readOut, exposed)};
}

bool SimulatedCamera::Implementation::replay(QString const& recordName, QString* error) {
    EepromDevice const* const device = deviceOrMessage(handle, error);
    if (!device)
        return false;
    auto const entries =
        readStartUpRecord(device->contents(), recordName, profile.registerAddressWidth, error);
    return entries && replayEntries(*entries, handle.registers, error);
}

SimulatedCamera::SimulatedCamera(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}

SimulatedCamera::~SimulatedCamera() = default;

std::unique_ptr<SimulatedCamera> SimulatedCamera::open(QString const& profile, QString* error) {
    QString const file = profileFile(profile);
    // Whoever names a file is told what is wrong with it, and whoever names a profile which there are.
    bool const isNamedFile = QFileInfo::exists(file) || profile == file;
    if (!isNamedFile) {
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
    for (QFileInfo const& file :
         profileFolder().entryInfoList({QStringLiteral("*.json")}, QDir::Files, QDir::Name))
        names.append(file.completeBaseName());
    return names;
}

QStringList SimulatedCamera::notedProfileNames() {
    QStringList names = profileNames();
    QString error; // a profile that cannot be opened is listed all the same
    for (QString& name : names)
        if (auto const camera = open(name, &error); camera && !camera->description().note.isEmpty())
            name += QStringLiteral("  (") + camera->description().note + QLatin1Char(')');
    return names;
}

vy_Camera* SimulatedCamera::handle() const { return &m_implementation->handle; }
CameraDescription const& SimulatedCamera::description() const { return m_implementation->description; }
void SimulatedCamera::setLight(Light const& light) { m_implementation->setLight(light); }
Light const& SimulatedCamera::light() const { return m_implementation->light; }
void SimulatedCamera::setSeed(uint64_t seed) { m_implementation->seed = seed; }

bool SimulatedCamera::useMeasuredShading(QString const& file, QString* error) {
    std::optional<MeasuredShading> shading = readMeasuredShading(file, error);
    if (!shading)
        return false;
    m_implementation->measuredShading = std::move(shading);
    m_implementation->field.clear();
    return true;
}

Frame SimulatedCamera::grab() { return m_implementation->grab(); }
IdealFrame SimulatedCamera::idealFrame() const { return m_implementation->idealFrame(); }
bool SimulatedCamera::isCorrecting() const { return m_implementation->correction.isOn(); }
uint64_t SimulatedCamera::registerWrites() const { return m_implementation->handle.registers.writes(); }
bool SimulatedCamera::hasEeprom() const { return m_implementation->handle.bus.device() != nullptr; }

bool SimulatedCamera::loadEeprom(QString const& file, QString* error) {
    EepromDevice* const device = deviceOrMessage(m_implementation->handle, error);
    std::optional<EepromContents> const contents = device ? readContents(file, error) : std::nullopt;
    if (contents)
        device->contents() = *contents;
    return contents.has_value();
}

bool SimulatedCamera::saveEeprom(QString const& file, QString* error) const {
    EepromDevice const* const device = deviceOrMessage(m_implementation->handle, error);
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
    return m_implementation->replay(recordName, error);
}

void SimulatedCamera::useVirtualTime() { m_implementation->handle.bus.clock().useVirtualTime(); }

void SimulatedCamera::advanceTime(int milliseconds) {
    m_implementation->handle.bus.clock().advance(std::chrono::milliseconds(milliseconds));
}

QStringList SimulatedCamera::faultNames() { return deviceFaultNames(); }

bool SimulatedCamera::injectFault(QString const& name, uint64_t n, bool forEver) {
    std::optional<DeviceFault> const fault = deviceFaultByName(name);
    EepromDevice* const device = m_implementation->handle.bus.device();
    if (fault && device)
        device->plan(FaultPlan(*fault, n, forEver));
    return fault.has_value();
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
