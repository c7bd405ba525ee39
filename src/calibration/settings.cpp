#include "calibration/calibration_flow.h"
#include "common/numbers.h"

namespace kestra {
namespace {
constexpr char kDirKey[] = "LensAssist Dir"; // one directory serves all sensors
constexpr char kFalloffKey[] = "LensAssist Falloff";
constexpr char kRadiusKey[] = "LensAssist Radius";
constexpr char kUniformityLimitKey[] = "LensAssist GoodCU";

constexpr int32_t kDefaultFalloff = 95; // per cent
constexpr int32_t kDefaultRadius = 0;
constexpr int32_t kDefaultUniformityLimit = 2000; // thousandths

struct TemperatureSetting {
    char const* key;
    int32_t fallback; ///< kelvin
};
constexpr TemperatureSetting kTemperatures[kIlluminants] = {
    {"LensAssist Left Temp", 2800}, {"LensAssist Middle Temp", 4000}, {"LensAssist Right Temp", 6500}};

// The key under which the host keeps a setting of one sensor.
QByteArray keyFor(char const* setting, SensorRecord const& sensor) {
    return QByteArray(setting) + " for " + QByteArray(sensor.name);
}
} // namespace

void CalibrationFlow::loadSettings() {
    QByteArray const directory = m_host.readTextSetting(kDirKey);
    auto const read = [&](char const* setting, int32_t fallback) {
        return m_host.readIntSetting(keyFor(setting, m_sensor), fallback);
    };
    int32_t const falloff = read(kFalloffKey, kDefaultFalloff);
    m_state.lensRadius = read(kRadiusKey, kDefaultRadius);
    m_state.uniformityLimit = read(kUniformityLimitKey, kDefaultUniformityLimit) / kThousandths;
    std::array<int32_t, kIlluminants> temperatures{};
    for (size_t i = 0; i < kIlluminants && m_traits.takesThreePictures; ++i)
        temperatures[i] = read(kTemperatures[i].key, kTemperatures[i].fallback);

    UpdateGuard const guard(m_state.updateDepth);
    widgets.showSaveDir(QString::fromLocal8Bit(directory));
    widgets.selectFalloff(QStringLiteral("%1%").arg(falloff));
    widgets.showUniformityLimit(QString::number(m_state.uniformityLimit, 'f', 2));
    for (size_t i = 0; i < kIlluminants; ++i)
        widgets.showTemperature(i, temperatures[i]);
}

// The radius is the host's to set, so it is never written.
void CalibrationFlow::storeSettings() {
    auto const write = [&](char const* setting, int32_t value) {
        m_host.writeIntSetting(keyFor(setting, m_sensor), value);
    };
    QByteArray const directory = widgets.saveDirText().toLocal8Bit();
    int32_t const falloff = widgets.clampedFalloff();
    uniformityLimitChanged(widgets.uniformityLimitText());
    m_host.writeTextSetting(kDirKey, directory);
    write(kFalloffKey, falloff);
    write(kUniformityLimitKey, toInt32(m_state.uniformityLimit * kThousandths));
    for (size_t i = 0; i < kIlluminants && m_traits.takesThreePictures; ++i)
        write(kTemperatures[i].key, toInt32(widgets.temperature(i)));
}
} // namespace kestra
