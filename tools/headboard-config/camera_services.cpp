#include "tools/headboard-config/camera_services.h"

#include "headboard/eeprom_transport.h"

#include <QtDebug>
#include <algorithm>
#include <cstring>

using namespace kestra;

namespace {
CameraServices* current = nullptr;

constexpr uint32_t kByteBits = 8;

QString optionKey(char const* option) { return QStringLiteral("options/") + QString::fromLocal8Bit(option); }
QString settingKey(char const* key) { return QStringLiteral("settings/") + QString::fromLocal8Bit(key); }

// A host reaches a headboard's devices whichever way the sensor offers, so the way is the EEPROM's own. That
// transfers bytes only: for all else there is no camera.
EepromShare deviceOf(vy_Camera* camera, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
    EepromShare eeprom = HeadboardEepromCreate(dataBits == kByteBits ? camera : nullptr);
    eeprom->deviceAddress = address;
    eeprom->addressBits = addressBits;
    return eeprom;
}
} // namespace

struct CameraServiceFunctions {
    static uint32_t readBusByte(uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
        EepromShare const eeprom = deviceOf(current->m_camera, device, addressBits, dataBits);
        uint8_t byte = 0;
        if (readDevice(*eeprom, eeprom->sensor, address, {&byte, 1}) == 0)
            return byte;
        qWarning("headboard-config: the device 0x%X does not tell its byte %u", device, address);
        return 0;
    }

    static void writeBusByte(uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,
                             uint32_t dataBits) {
        EepromShare const eeprom = deviceOf(current->m_camera, device, addressBits, dataBits);
        auto const byte = uint8_t(value);
        if (writeDevice(*eeprom, eeprom->sensor, address, {&byte, 1}) != 0)
            qWarning("headboard-config: the device 0x%X does not take its byte %u", device, address);
    }

    static char const* readOption(char const* option) {
        return (current->m_options[option] = current->stored(optionKey(option), {})).constData();
    }

    static void writeOption(char const* option, char const* value) {
        current->store(optionKey(option), value);
    }

    static void readTextSetting(char const* key, char* buffer, uint32_t size, char const* fallback) {
        QByteArray const value = current->stored(settingKey(key), fallback);
        size_t const length = std::min(size_t(value.size()), size_t(size) - 1);
        std::memcpy(buffer, value.constData(), length);
        buffer[length] = '\0';
    }

    static void writeTextSetting(char const* key, char const* value) {
        current->store(settingKey(key), value);
    }
};

CameraServices::CameraServices(vy_Camera* camera, QString const& settingsFile)
    : m_camera(camera), m_store(settingsFile, QSettings::IniFormat) {
    current = this;
}

CameraServices::~CameraServices() { current = nullptr; }

HostServices CameraServices::table() {
    using F = CameraServiceFunctions;
    HostServices services{};
    services.readBusByte = F::readBusByte;
    services.writeBusByte = F::writeBusByte;
    services.readOption = F::readOption;
    services.writeOption = F::writeOption;
    services.readTextSetting = F::readTextSetting;
    services.writeTextSetting = F::writeTextSetting;
    return services;
}

QByteArray CameraServices::stored(QString const& key, QByteArray const& fallback) const {
    return m_store.contains(key) ? m_store.value(key).toString().toLocal8Bit() : fallback;
}

void CameraServices::store(QString const& key, char const* value) {
    m_store.setValue(key, QString::fromLocal8Bit(value));
    m_store.sync();
    if (m_store.status() != QSettings::NoError)
        qWarning("headboard-config: the settings cannot be kept in %s", qUtf8Printable(m_store.fileName()));
}
