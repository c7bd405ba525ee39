#include "simulator/boundary/plugin_library.h"

#include "simulator/boundary/boundary.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QtDebug>

namespace pictara {
namespace {
template <typename Function>
bool resolve(QLibrary& library, char const* name, Function& function, QString* error) {
    function = reinterpret_cast<Function>(library.resolve(name));
    if (!function)
        *error = QStringLiteral("The plug-in %1 lacks the function %2.")
                     .arg(library.fileName(), QString::fromLatin1(name));
    return function != nullptr;
}

/// A picture that is handed to the plug-in.
struct Picture {
    void const* pixels;
    uint32_t type, width;
    int32_t height;
    uint32_t pitch;
};

QByteArray hashOf(Picture const& picture) {
    return simulator::hashText(
        {static_cast<unsigned char const*>(picture.pixels), size_t(picture.height) * picture.pitch});
}

QByteArray callText(Picture const& picture) {
    return "type " + QByteArray::number(picture.type) + ", " + QByteArray::number(picture.width) + 'x' +
           QByteArray::number(picture.height) + ", pitch " + QByteArray::number(picture.pitch) + ", " +
           hashOf(picture);
}

constexpr SourceWatch kWatch{CallSource::Plugin};
} // namespace

bool PluginLibrary::load(QString const& file, QString* error) {
    // The loader would wait for a pipe.
    if (QFileInfo const info(file); info.exists() && !info.isFile()) {
        *error = QStringLiteral("The plug-in %1 is no regular file.").arg(file);
        return false;
    }
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

bool PluginLibrary::unload() {
    m_functions = {}; // what the plug-in writes while it goes is not reported back to it
    if (!m_library.isLoaded() || m_library.unload())
        return true;
    qWarning("pictara: the plug-in cannot be unloaded: %s", qUtf8Printable(m_library.errorString()));
    return false;
}

QDialog* PluginLibrary::openDialog(QWidget* parent, SensorRecord const* sensor, HostServices const* services,
                                   uint32_t apiVersion) const {
    return m_functions.openQtDialog ? m_functions.openQtDialog(apiVersion, parent, sensor, services)
                                    : nullptr;
}

void PluginLibrary::closeDialog() const {
    if (m_functions.closeDialog)
        m_functions.closeDialog();
}

void PluginLibrary::imageData(void const* pixels, uint32_t type, uint32_t width, int32_t height,
                              uint32_t pitch) const {
    if (m_functions.imageData)
        simulator::observed(kWatch, simulator::Call("ImageData", Picture{pixels, type, width, height, pitch}),
                            [&] { m_functions.imageData(pixels, type, width, height, pitch); });
}

void PluginLibrary::rgbImageData(void* pixels, uint32_t type, uint32_t width, uint32_t height,
                                 int32_t pitch) const {
    Picture const picture{pixels, type, width, int32_t(height), uint32_t(pitch)};
    if (m_functions.rgbImageData)
        simulator::observed(
            kWatch, simulator::Call("RgbImageData", picture),
            [&] { m_functions.rgbImageData(pixels, type, width, height, pitch); },
            [&] { return hashOf(picture); });
}

void PluginLibrary::registerChanged(uint32_t what, uint32_t value) const {
    if (m_functions.registerChanged)
        simulator::observed(kWatch, simulator::Call("RegisterChanged", what, value),
                            [&] { m_functions.registerChanged(what, value); });
}
} // namespace pictara
