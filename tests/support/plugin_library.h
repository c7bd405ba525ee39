#pragma once

#include "published/host_records.h"

#include <QLibrary>
#include <cstdint>

class QDialog;
class QWidget;

/// The built plug-in as a host sees it: a file and five functions.
struct PluginLibrary {
    PluginLibrary() { load(QStringLiteral(PLUGIN_FILE)); }

    void load(QString const& file) {
        library.setFileName(file);
        resolve(open, "OpenQtDialog");
        resolve(close, "CloseDialog");
        resolve(image, "ImageData");
        resolve(rgbImage, "RgbImageData");
        resolve(registerChanged, "RegisterChanged");
    }

    QLibrary library;
    QDialog* (*open)(uint32_t, QWidget*, SensorRecord const*, HostServices const*) = nullptr;
    void (*close)() = nullptr;
    void (*image)(void const*, uint32_t, uint32_t, int32_t, uint32_t) = nullptr;
    void (*rgbImage)(void const*, uint32_t, uint32_t, uint32_t, int32_t) = nullptr;
    void (*registerChanged)(uint32_t, uint32_t) = nullptr;

private:
    template <typename Function>
    void resolve(Function& function, char const* name) {
        function = reinterpret_cast<Function>(library.resolve(name));
    }
};
