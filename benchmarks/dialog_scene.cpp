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
    QString error;
    if (!m_plugin.load(QStringLiteral(PLUGIN_FILE), &error))
        qFatal("%s", qUtf8Printable(error));
    m_camera = simulator::SimulatedCamera::open(QStringLiteral("polynomial"), &error);
    if (!m_camera)
        qFatal("%s", qUtf8Printable(error));
    std::string const eeprom = m_bench.saveDir() + "/eeprom.bin";
    std::ofstream(eeprom, std::ios::binary) << formattedEeprom();
    if (!m_camera->loadEeprom(QString::fromStdString(eeprom), &error))
        qFatal("%s", qUtf8Printable(error));
    simulator::CameraDescription const& camera = m_camera->description();
    m_bench.sensor.name = camera.sensorName.constData();
    m_bench.sensor.fileNamePart = camera.fileNamePart.constData();
    m_bench.sensor.sensorKind = camera.sensorKind;
    m_bench.sensor.variant = camera.variant;
    m_bench.sensor.camera = m_camera->handle();
}

DialogScene::~DialogScene() = default;

void DialogScene::open() {
    m_dialog.reset(m_plugin.openDialog(nullptr, &m_bench.sensor, &m_bench.services));
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
    m_bench.host.log.clear();
}

void DialogScene::frame() { m_plugin.imageData(m_pixels.data(), kRgb32, kWidth, kHeight, kWidth * 4); }
void DialogScene::tick() { m_tick.invoke(m_page, Qt::DirectConnection); }

void DialogScene::startCalibration() {
    QMetaObject::invokeMethod(m_page, "OnBnClickedCalibrate");
    QApplication::processEvents();
}
