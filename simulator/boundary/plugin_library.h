#pragma once

#include "published/entries.h"

#include <QLibrary>
#include <QString>

namespace pictara {
/// The dialog plug-in, found by its file name. Its functions do nothing when it is not loaded.
class PluginLibrary {
public:
    PluginLibrary() = default;
    ~PluginLibrary() { (void)unload(); }
    Q_DISABLE_COPY(PluginLibrary)

    /// Empty stands for the plug-in beside the program. False with a message for the user.
    [[nodiscard]] bool load(QString const& file, QString* error);
    /// The plug-in deletes its dialog and pages while it is unloaded, so camera and services must still
    /// stand. False when the system keeps the library, which is told.
    bool unload();

    /// The dialog stays the plug-in's; null when it does not want to make one.
    [[nodiscard]] QDialog* openDialog(QWidget* parent, SensorRecord const* sensor,
                                      HostServices const* services,
                                      uint32_t apiVersion = kInterfaceVersion) const;
    void closeDialog() const;
    /// A raw frame; the pixels stay as they are.
    void imageData(void const* pixels, uint32_t type, uint32_t width, int32_t height, uint32_t pitch) const;
    /// A picture to be displayed; the plug-in may paint into it.
    void rgbImageData(void* pixels, uint32_t type, uint32_t width, uint32_t height, int32_t pitch) const;
    /// By default it is not told which register it was.
    void registerChanged(uint32_t what = 0, uint32_t value = 0) const;

private:
    static constexpr uint32_t kInterfaceVersion = 5;

    struct Functions {
        decltype(&::OpenQtDialog) openQtDialog = nullptr;
        decltype(&::CloseDialog) closeDialog = nullptr;
        decltype(&::ImageData) imageData = nullptr;
        decltype(&::RgbImageData) rgbImageData = nullptr;
        decltype(&::RegisterChanged) registerChanged = nullptr;
    };

    QLibrary m_library;
    Functions m_functions;
};
} // namespace pictara
