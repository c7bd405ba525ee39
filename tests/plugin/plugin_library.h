#pragma once

#include "common/host_records.h"

#include <QLibrary>
#include <cstdint>

class QDialog;
class QWidget;

/// The built plug-in as a host sees it: a file and five functions.
struct PluginLibrary {
    QLibrary library{QStringLiteral(PLUGIN_FILE)};
    QDialog* (*open)(uint32_t, QWidget*, SensorRecord const*,
                     HostServices const*) = resolve<decltype(open)>("OpenQtDialog");
    void (*close)() = resolve<decltype(close)>("CloseDialog");
    void (*image)(void const*, uint32_t, uint32_t, int32_t, uint32_t) = resolve<decltype(image)>("ImageData");
    void (*rgbImage)(void const*, uint32_t, uint32_t, uint32_t,
                     int32_t) = resolve<decltype(rgbImage)>("RgbImageData");
    void (*registerChanged)(uint32_t, uint32_t) = resolve<decltype(registerChanged)>("RegisterChanged");

    template <typename Function>
    Function resolve(char const* name) {
        return reinterpret_cast<Function>(library.resolve(name));
    }
};
