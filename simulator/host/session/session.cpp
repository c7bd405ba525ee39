#include "simulator/host/session/session.h"

#include "simulator/boundary/boundary.h"
#include "simulator/files/whole_file.h"

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
        return std::nullopt;
    if (iniFileSetting(file).size() < kTextSettingSize)
        return file;
    *error = QStringLiteral("The name of the ini file is too long for a plug-in: %1").arg(file);
    return std::nullopt;
}

// The next operation, or the next byte stored, is what a wish without a number means.
void plan(FaultWish const& wish, simulator::SimulatedCamera& camera) {
    uint64_t const next = wish.name == QLatin1String("power-cut") ? 0 : 1;
    (void)camera.injectFault(wish.name, wish.operation.value_or(next), wish.forEver);
}

QString settingsFileIn(QString const& folder) { return folder + QStringLiteral("/settings.ini"); }
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
    if (!folder || !files::isReplaceable(settingsFileIn(*folder), error))
        return nullptr;
    std::unique_ptr<Session> session(new Session(std::move(camera), options, *folder, *iniFile));
    if (!session->prepareEeprom(error))
        return nullptr;
    if (!session->m_settings.isReadable()) {
        *error = QStringLiteral("The settings file %1 cannot be read.").arg(settingsFileIn(*folder));
        return nullptr;
    }
    return session->m_plugin.load(options.pluginFile, error) ? std::move(session) : nullptr;
}

Session::Session(std::unique_ptr<simulator::SimulatedCamera> camera, Options const& options,
                 QString const& outputFolder, QString const& iniFile)
    : m_options(options), m_camera(std::move(camera)), m_outputFolder(outputFolder),
      m_states(m_camera->description()), m_settings(settingsFileIn(outputFolder)),
      m_registers(m_camera->handle(), [this] { m_plugin.registerChanged(); }),
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

bool Session::prepareEeprom(QString* error) {
    auto const& fault = m_options.fault;
    bool const isReplay = !m_options.replayFile.isEmpty();
    if (!m_camera->hasEeprom()) {
        QString const needless = !m_options.eepromFile.isEmpty() ? QStringLiteral("--eeprom")
                                 : isReplay                      ? QStringLiteral("--replay-eeprom")
                                 : fault                         ? QStringLiteral("--fault")
                                                                 : QString();
        *error = QStringLiteral("The sensor of the profile %1 has no EEPROM for %2.")
                     .arg(m_camera->description().profile, needless);
        return needless.isEmpty();
    }
    if (fault && (fault->operation || !m_options.runAll)) // a run waits for its save
        plan(*fault, *m_camera);
    if (isReplay) {
        // A null name stands for the first record.
        bool const started =
            m_camera->loadEeprom(m_options.replayFile, error) && m_camera->replayEeprom({}, error);
        m_replayedWrites = m_camera->registerWrites();
        return started;
    }
    m_eepromFile = m_options.eepromFile.isEmpty() ? m_outputFolder + QStringLiteral("/eeprom.bin")
                                                  : QFileInfo(m_options.eepromFile).absoluteFilePath();
    return (!QFileInfo::exists(m_eepromFile) || m_camera->loadEeprom(m_eepromFile, error)) &&
           files::isReplaceable(m_eepromFile, error);
}

bool Session::keepEeprom(QString* error) const {
    return m_eepromFile.isEmpty() || m_camera->saveEeprom(m_eepromFile, error);
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

void Session::bringLamp(double kelvin) {
    simulator::Light light = m_camera->light();
    light.colourTemperature = kelvin;
    setLight(light);
}

void Session::setLight(simulator::Light const& light) {
    Boundary::instance().doing(lightWords(light));
    m_camera->setLight(light);
}

void Session::injectFault(FaultWish const& wish) {
    Boundary::instance().doing({"fault", textOf(wish)});
    plan(wish, *m_camera);
}

bool Session::setRegister(QByteArray const& name, uint32_t value) {
    Boundary::instance().doing({"register", QString::fromLatin1(name), QString::number(value)});
    return m_registers.write(name.constData(), "", value);
}

void Session::closePlugin() {
    if (std::exchange(m_isDialogMade, false))
        Boundary::instance().doing({"close"});
    m_plugin.closeDialog();
    m_plugin.unload();
}
} // namespace pictara
