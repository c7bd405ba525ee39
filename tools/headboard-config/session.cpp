#include "tools/headboard-config/session.h"

#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QVBoxLayout>

using namespace kestra;

namespace {
SensorRecord recordOf(simulator::SimulatedCamera const& camera) {
    simulator::CameraDescription const& description = camera.description();
    SensorRecord sensor{};
    sensor.name = description.sensorName.constData();
    sensor.sensorKind = description.sensorKind;
    sensor.variant = description.variant;
    sensor.fileNamePart = description.fileNamePart.constData();
    sensor.camera = camera.handle();
    return sensor;
}

// Told now: what a session stored could not be kept. Whoever reads the settings would wait for a pipe.
bool isUsable(QString const& file, QString* error) {
    return files::isReplaceable(file, error) &&
           (!QFileInfo::exists(file) || files::read(file, files::kMostText, error));
}
} // namespace

std::unique_ptr<Session> Session::open(Options const& options, QString* error) {
    auto camera = simulator::SimulatedCamera::open(options.profile, error);
    if (!camera)
        return nullptr;
    if (camera->hasEeprom()) {
        if (QFileInfo::exists(options.eepromFile) && !camera->loadEeprom(options.eepromFile, error))
            return nullptr;
        if (!isUsable(options.eepromFile, error))
            return nullptr;
    }
    if (!isUsable(options.settingsFile, error))
        return nullptr;
    return std::unique_ptr<Session>(new Session(std::move(camera), options));
}

Session::Session(std::unique_ptr<simulator::SimulatedCamera> camera, Options const& options)
    : m_camera(std::move(camera)), m_eepromFile(options.eepromFile),
      m_services(m_camera->handle(), options.settingsFile), m_bullets(QString(), nullptr) {
    HostServices const services = CameraServices::table();
    m_page = new Config(nullptr, recordOf(*m_camera), &services, m_eeprom, &m_bullets);
    m_window.setWindowTitle(QStringLiteral("Headboard Configuration - %1").arg(options.profile));
    auto* const layout = new QVBoxLayout(&m_window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_page);
}

Session::~Session() { discardEeprom(m_eeprom); }

bool Session::saveEeprom(QString* error) const {
    return !m_camera->hasEeprom() || m_camera->saveEeprom(m_eepromFile, error);
}
