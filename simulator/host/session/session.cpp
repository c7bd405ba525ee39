#include "simulator/host/session/session.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/session/boundary.h"
#include "simulator/host/session/light_words.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <utility>

namespace pictara {
namespace {
// The plug-in reads text settings into a buffer of this size, the closing zero included.
constexpr int kTextSettingSize = 260;

// The absolute name of a readable ini file.
std::optional<QString> checkedIniFile(Options const& options, QString* error) {
    QString const given =
        options.iniFile.isEmpty() ? QCoreApplication::applicationDirPath() + "/pictara.ini" : options.iniFile;
    QString file = QFileInfo(given).absoluteFilePath();
    if (!files::read(file, files::kMostText, error))
        *error = QStringLiteral("The ini file %1 cannot be read: %2").arg(file, *error);
    else if (iniFileSetting(file).size() >= kTextSettingSize)
        *error = QStringLiteral("The name of the ini file is too long for a plug-in: %1").arg(file);
    else
        return file;
    return std::nullopt;
}
} // namespace

std::unique_ptr<simulator::SimulatedCamera> openCamera(Options const& options, QString* error) {
    auto camera = simulator::SimulatedCamera::open(options.profile, error);
    if (!camera)
        return nullptr;
    camera->setLight(lightOf(options));
    camera->setSeed(options.seed);
    if (!options.shadingFile.isEmpty() && !camera->useMeasuredShading(options.shadingFile, error))
        return nullptr;
    return camera;
}

std::optional<QString> createdFolder(QString const& name, QString* error) {
    QString folder = QDir(name).absolutePath();
    if (QDir().mkpath(folder) && QFileInfo(folder).isWritable())
        return folder;
    *error = QStringLiteral("The folder %1 cannot be created or written to.").arg(folder);
    return std::nullopt;
}

std::unique_ptr<Session> Session::open(Options const& options, QString* error) {
    auto camera = openCamera(options, error);
    auto const iniFile = camera ? checkedIniFile(options, error) : std::nullopt;
    auto const folder = iniFile ? createdFolder(options.outputFolder, error) : std::nullopt;
    if (!folder)
        return nullptr;
    std::optional<EepromStore> eeprom = EepromStore::open(*camera, options, *folder, error);
    if (!eeprom)
        return nullptr;
    QString const settings = *folder + QStringLiteral("/settings.ini");
    std::unique_ptr<Session> session(
        new Session(std::move(camera), *std::move(eeprom), options, *folder, *iniFile, settings));
    if (!session->m_settings.read(error)) {
        *error = QStringLiteral("The settings file %1 cannot be read: %2").arg(settings, *error);
        return nullptr;
    }
    if (!session->m_plugin.load(options.pluginFile, error))
        return nullptr;
    return session;
}

Session::Session(std::unique_ptr<simulator::SimulatedCamera> camera, EepromStore eeprom,
                 Options const& options, QString const& outputFolder, QString const& iniFile,
                 QString const& settingsFile)
    : m_camera(std::move(camera)), m_eeprom(std::move(eeprom)), m_shadingFile(options.shadingFile),
      m_seed(options.seed), m_outputFolder(outputFolder), m_states(m_camera->description()),
      m_settings(settingsFile), m_registers(m_camera->handle(), [this] { m_plugin.registerChanged(); }),
      m_desk(m_states, m_settings, m_registers, iniFile),
      m_frames(*m_camera, m_states, m_registers, m_plugin) {
    simulator::CameraDescription const& description = m_camera->description();
    m_sensor.name = description.sensorName.constData();
    m_sensor.sensorKind = description.sensorKind;
    m_sensor.variant = description.variant;
    m_sensor.fileNamePart = description.fileNamePart.constData();
    m_sensor.camera = m_camera->handle();
}

Session::~Session() {
    // Unloading calls the services, which stand on members that would otherwise go first.
    closePlugin();
}

QDialog* Session::openDialog(QWidget* parent, QString* error) {
    Boundary::instance().doing({"open"});
    QDialog* const dialog = m_plugin.openDialog(parent, &m_sensor, &ServiceDesk::table());
    m_isDialogMade = m_isDialogMade || dialog;
    if (!dialog)
        *error = QStringLiteral("The plug-in opens no dialog for this sensor: its kind is not supported, or "
                                "the ini file has no section [Lens Calibration Setup].");
    return dialog;
}

Scene Session::scene() const { return {m_camera->description(), m_shadingFile, m_camera->light(), m_seed}; }

ViewingConditions Session::conditions() const {
    return {m_frames.exposure(), m_states.read("Relative Red Gain"), m_states.read("Relative Blue Gain")};
}

void Session::bringLamp(double kelvin) {
    simulator::Light light = m_camera->light();
    light.colourTemperature = kelvin;
    setLight(light);
}

void Session::setLight(simulator::Light const& light) {
    Boundary::instance().doing(lightWords(light));
    m_camera->setLight(light);
}

bool Session::injectFault(FaultWish const& wish) {
    Boundary::instance().doing({"fault", textOf(wish)});
    return m_camera->injectFault(wish.name, wish.operation.value_or(1), wish.forEver);
}

void Session::setRegister(QByteArray const& name, uint32_t value) {
    Boundary::instance().doing({"register", QString::fromLatin1(name), QString::number(value)});
    m_registers.write(name.constData(), "", value);
}

void Session::closePlugin() {
    if (std::exchange(m_isDialogMade, false))
        Boundary::instance().doing({"close"});
    m_plugin.closeDialog();
    m_plugin.unload();
}
} // namespace pictara
