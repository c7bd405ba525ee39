#pragma once

#include "published/host_records.h"

#include <QLibrary>
#include <QString>

class QDialog;
class QWidget;

namespace pictara {

/// The dialog plug-in, found by its file name. Its functions do nothing when it is not loaded.
class PluginLibrary {
public:
    PluginLibrary() = default;
    ~PluginLibrary() { unload(); }
    PluginLibrary(PluginLibrary const&) = delete;
    PluginLibrary& operator=(PluginLibrary const&) = delete;

    /// Empty stands for the plug-in beside the program. False with a message for the user.
    [[nodiscard]] bool load(QString const& file, QString* error);
    /// The plug-in deletes its dialog and pages while it is unloaded, so camera and services must still
    /// stand.
    void unload();

    /// The dialog stays the plug-in's; null when it does not want to make one.
    [[nodiscard]] QDialog* openDialog(QWidget* parent, SensorRecord const& sensor,
                                      HostServices const& services) const;
    void closeDialog() const;
    /// A raw frame; the pixels stay as they are.
    void imageData(void const* pixels, uint32_t type, uint32_t width, int32_t height, uint32_t pitch) const;
    /// A picture to be displayed; the plug-in may paint into it.
    void rgbImageData(void* pixels, uint32_t width, int32_t height, int32_t pitch) const;
    void registerChanged() const;

private:
    struct Functions {
        QDialog* (*openQtDialog)(uint32_t apiVersion, QWidget* parent, SensorRecord const* sensor,
                                 HostServices const* services) = nullptr;
        void (*closeDialog)() = nullptr;
        void (*imageData)(void const* frame, uint32_t type, uint32_t width, int32_t height,
                          uint32_t pitch) = nullptr;
        void (*rgbImageData)(void const* frame, uint32_t type, uint32_t width, uint32_t height,
                             int32_t pitch) = nullptr;
        void (*registerChanged)(uint32_t what, uint32_t value) = nullptr;
    };

    QLibrary m_library;
    Functions m_functions;
};

} // namespace pictara
