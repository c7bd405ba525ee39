#pragma once

#include "published/host_records.h"

#include <QByteArray>
#include <QSettings>
#include <map>

/// The host's services that the configuration page uses, over a camera: bytes on its serial bus, and options
/// and settings in an ini file. All other slots are null. One lives at a time, as long as its table is used.
class CameraServices {
public:
    CameraServices(vy_Camera* camera, QString const& settingsFile);
    ~CameraServices();
    CameraServices(CameraServices const&) = delete;
    CameraServices& operator=(CameraServices const&) = delete;

    [[nodiscard]] static HostServices table();

private:
    friend struct CameraServiceFunctions;
    [[nodiscard]] QByteArray stored(QString const& key, QByteArray const& fallback) const;
    void store(QString const& key, char const* value);

    vy_Camera* m_camera;
    QSettings m_store;
    std::map<QByteArray, QByteArray> m_options; ///< texts that were handed out
};
