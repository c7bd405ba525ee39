#include "simulator/host/plugin_library.h"

#include "simulator/camera/simulated_camera.h"

#include <QCoreApplication>
#include <QtDebug>

namespace pictara {
namespace {

constexpr uint32_t kInterfaceVersion = 5;
constexpr uint32_t kAnyRegister = 0;

template <typename Function>
bool resolve(QLibrary& library, char const* name, Function& function, QString* error) {
    function = reinterpret_cast<Function>(library.resolve(name));
    if (!function)
        *error = QStringLiteral("The plug-in %1 lacks the function %2.")
                     .arg(library.fileName(), QString::fromLatin1(name));
    return function != nullptr;
}

} // namespace

bool PluginLibrary::load(QString const& file, QString* error) {
    m_library.setFileName(file.isEmpty() ? QCoreApplication::applicationDirPath() + "/KestraMfr" : file);
    if (!m_library.load()) {
        *error = QStringLiteral("The plug-in cannot be loaded: %1").arg(m_library.errorString());
        return false;
    }
    Functions all;
    if (!resolve(m_library, "OpenQtDialog", all.openQtDialog, error) ||
        !resolve(m_library, "CloseDialog", all.closeDialog, error) ||
        !resolve(m_library, "ImageData", all.imageData, error) ||
        !resolve(m_library, "RgbImageData", all.rgbImageData, error) ||
        !resolve(m_library, "RegisterChanged", all.registerChanged, error))
        return false;
    m_functions = all;
    return true;
}

void PluginLibrary::unload() {
    m_functions = {}; // what the plug-in writes while it goes is not reported back to it
    if (m_library.isLoaded() && !m_library.unload())
        qWarning("pictara: the plug-in cannot be unloaded: %s", qUtf8Printable(m_library.errorString()));
}

QDialog* PluginLibrary::openDialog(QWidget* parent, SensorRecord const& sensor,
                                   HostServices const& services) const {
    return m_functions.openQtDialog ? m_functions.openQtDialog(kInterfaceVersion, parent, &sensor, &services)
                                    : nullptr;
}

void PluginLibrary::closeDialog() const {
    if (m_functions.closeDialog)
        m_functions.closeDialog();
}

void PluginLibrary::imageData(void const* pixels, uint32_t type, uint32_t width, int32_t height,
                              uint32_t pitch) const {
    if (m_functions.imageData)
        m_functions.imageData(pixels, type, width, height, pitch);
}

void PluginLibrary::rgbImageData(void* pixels, uint32_t width, int32_t height, int32_t pitch) const {
    if (m_functions.rgbImageData)
        m_functions.rgbImageData(pixels, uint32_t(simulator::FrameType::Rgb32), width, uint32_t(height),
                                 pitch);
}

void PluginLibrary::registerChanged() const {
    if (m_functions.registerChanged)
        m_functions.registerChanged(kAnyRegister, 0);
}

} // namespace pictara
