#include "benchmarks/dialog_scene.h"

#include <QApplication>
#include <QTimer>
#include <fstream>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr uint32_t kRgb32 = 11;

// A camera comes from the factory with a blank EEPROM; only its first dialog ever formats it, which takes
// three write cycles.
std::string formattedEeprom() {
    constexpr size_t kBytes = 8192;
    std::string contents("VYEE\x01");
    contents.resize(kBytes, '\xFF');
    return contents;
}

} // namespace

DialogScene::DialogScene() : m_pixels(size_t(kWidth) * kHeight, 0x808080) {
    std::string const ini = m_folder.filePath(QStringLiteral("host.ini")).toStdString();
    std::ofstream(ini) << "[Lens Calibration Setup]\n[Lens Calibration Verify]\n";
    m_host.textSettings["IniFileName"] = ini;
    m_host.textSettings["LensAssist Dir"] = m_folder.path().toStdString();
    m_services = m_host.services();
    QString error;
    if (!m_plugin.load(QStringLiteral(PLUGIN_FILE), &error))
        qFatal("%s", qUtf8Printable(error));
    m_camera = simulator::SimulatedCamera::open(QStringLiteral("poly-12bit"), &error);
    if (!m_camera)
        qFatal("%s", qUtf8Printable(error));
    QString const eeprom = m_folder.filePath(QStringLiteral("eeprom.bin"));
    std::ofstream(eeprom.toStdString(), std::ios::binary) << formattedEeprom();
    if (!m_camera->loadEeprom(eeprom, &error))
        qFatal("%s", qUtf8Printable(error));
    simulator::CameraDescription const& camera = m_camera->description();
    m_sensor.name = camera.sensorName.constData();
    m_sensor.fileNamePart = camera.fileNamePart.constData();
    m_sensor.sensorKind = camera.sensorKind;
    m_sensor.variant = camera.variant;
    m_sensor.camera = m_camera->handle();
}

DialogScene::~DialogScene() = default;

void DialogScene::open() {
    m_dialog.reset(m_plugin.openDialog(nullptr, &m_sensor, &m_services));
    if (!m_dialog)
        qFatal("the plug-in opened no dialog");
    m_dialog->show();
    QApplication::processEvents();
    m_page = m_dialog->findChild<QDialog*>(QStringLiteral("LensAssist"));
    m_page->findChild<QTimer*>()->stop();
    m_tick = m_page->metaObject()->method(m_page->metaObject()->indexOfSlot("start()"));
}

void DialogScene::close() {
    m_dialog.reset();
    m_host.log.clear();
}

void DialogScene::frame() {
    m_plugin.imageData(m_pixels.data(), kRgb32, kWidth, kHeight, kWidth * 4);
}

void DialogScene::tick() {
    m_tick.invoke(m_page, Qt::DirectConnection);
}

void DialogScene::startCalibration() {
    QMetaObject::invokeMethod(m_page, "OnBnClickedCalibrate");
    QApplication::processEvents();
}
