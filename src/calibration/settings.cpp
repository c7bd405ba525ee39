#include "calibration/settings.h"

#include "common/numbers.h"

#include <algorithm>

namespace kestra {

namespace {

constexpr char kDirKey[] = "LensAssist Dir"; // one directory serves all sensors
constexpr char kFalloffKey[] = "LensAssist Falloff";
constexpr char kRadiusKey[] = "LensAssist Radius";
constexpr char kUniformityLimitKey[] = "LensAssist GoodCU";

constexpr int32_t kDefaultFalloff = 95; // per cent
constexpr int32_t kDefaultRadius = 0;
constexpr int32_t kDefaultUniformityLimit = 2000; // thousandths
constexpr double kThousandths = 1000.0;

} // namespace

QByteArray sensorSettingKey(char const* setting, char const* sensorName) {
    return QByteArray(setting) + " for " + QByteArray(sensorName);
}

int32_t falloffPercent(QString const& text) {
    return text.chopped(std::min<int>(1, text.size())).toInt();
}

int32_t clampedFalloffPercent(QString const& text) {
    return std::clamp(falloffPercent(text), 50, 125);
}

void loadSettings(PageCore& core) {
    Host const host = core.host;
    QByteArray const directory = host.readTextSetting(kDirKey);
    auto const read = [&](char const* setting, int32_t fallback) {
        return core.alive ? host.readIntSetting(sensorSettingKey(setting, core.sensor.name), fallback)
                          : fallback;
    };
    int32_t const falloff = read(kFalloffKey, kDefaultFalloff);
    int32_t const radius = read(kRadiusKey, kDefaultRadius);
    int32_t const limit = read(kUniformityLimitKey, kDefaultUniformityLimit);

    UpdateGuard const guard(core.state.updateDepth);
    core.widgets.showSaveDir(QString::fromLocal8Bit(directory));
    core.widgets.selectFalloff(QStringLiteral("%1%").arg(falloff));
    core.state.lensRadius = radius;
    core.state.uniformityLimit = limit / kThousandths;
    core.widgets.showUniformityLimit(QStringLiteral("%1").arg(core.state.uniformityLimit, 3, 'f', 2));
}

void storeSettings(PageCore& core) {
    Host const host = core.host;
    QByteArray const directory = core.widgets.saveDirText().toLocal8Bit();
    int32_t const falloff = clampedFalloffPercent(core.widgets.falloffText());
    core.state.uniformityLimit = leadingDecimal(core.widgets.uniformityLimitText().toLocal8Bit());
    int32_t const limit = toInt32(core.state.uniformityLimit * kThousandths);

    host.writeTextSetting(kDirKey, directory);
    if (core.alive)
        host.writeIntSetting(sensorSettingKey(kFalloffKey, core.sensor.name), falloff);
    if (core.alive)
        host.writeIntSetting(sensorSettingKey(kUniformityLimitKey, core.sensor.name), limit);
}

} // namespace kestra
