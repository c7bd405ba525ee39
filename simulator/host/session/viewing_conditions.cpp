#include "simulator/host/session/viewing_conditions.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/session/light_ranges.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace pictara {
namespace {
constexpr char kLamp[] = "lamp";
constexpr char kExposure[] = "exposure";
constexpr char kRedGain[] = "relativeRedGain";
constexpr char kBlueGain[] = "relativeBlueGain";
constexpr char kFrames[] = "frames";

constexpr int kHighest = 0xFFFF; // of an exposure; nothing else comes near it

// 0 for what is no whole number in the range.
int positiveNumber(QJsonObject const& object, char const* key) {
    int const value = object[QLatin1String(key)].toInt();
    return value <= kHighest ? value : 0;
}
} // namespace

QString conditionsFileOf(QString const& eepromFile) { return eepromFile + QStringLiteral(".conditions"); }

bool readConditions(QString const& name, std::optional<ViewingConditions>* conditions, QString* error) {
    if (!QFileInfo::exists(name))
        return true;
    auto const text = files::read(name, files::kMostText, error);
    if (!text) {
        *error = QStringLiteral("The file %1 cannot be read: %2").arg(name, *error);
        return false;
    }
    QJsonObject const object = QJsonDocument::fromJson(*text).object();
    double const lamp = object[QLatin1String(kLamp)].toDouble();
    int const exposure = positiveNumber(object, kExposure);
    int const red = positiveNumber(object, kRedGain), blue = positiveNumber(object, kBlueGain);
    int const frames = positiveNumber(object, kFrames);
    bool const isLamp = lamp >= kColourTemperatures.low && lamp <= kColourTemperatures.high;
    if (!isLamp || exposure <= 0 || red <= 0 || blue <= 0 || frames <= 0) {
        *error =
            QStringLiteral(
                "The file %1 does not tell %2 in kelvin and %3, %4, %5 and %6 in whole numbers from 1 to %7.")
                .arg(name, kLamp, kExposure, kRedGain, kBlueGain, kFrames)
                .arg(kHighest);
        return false;
    }
    *conditions = {lamp, uint32_t(exposure), red, blue, uint32_t(frames)};
    return true;
}

bool writeConditions(QString const& name, ViewingConditions const& conditions, QString* error) {
    QJsonObject const object{{QLatin1String(kLamp), conditions.lamp},
                             {QLatin1String(kExposure), int(conditions.exposure)},
                             {QLatin1String(kRedGain), conditions.redGain},
                             {QLatin1String(kBlueGain), conditions.blueGain},
                             {QLatin1String(kFrames), int(std::min<uint32_t>(conditions.frames, kHighest))}};
    bool const written = files::replace(name, QJsonDocument(object).toJson(), error);
    if (!written)
        *error = QStringLiteral("The file %1 cannot be written: %2").arg(name, *error);
    return written;
}
} // namespace pictara
