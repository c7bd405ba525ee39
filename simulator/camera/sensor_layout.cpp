#include "simulator/camera/sensor_layout.h"

#include <QJsonDocument>

namespace simulator {
namespace {

constexpr uint32_t kLargestSide = 16384; // pixels
constexpr double kLargestSample = 65535;

RegisterPlace readRegisterPlace(JsonPlace const& place) {
    return {place["id"].integer(0, 0xFFFF), place["address"].integer()};
}

QByteArray layoutText(QJsonObject const& object) {
    return QByteArrayLiteral("sensor-layout-1\n") + QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

SensorLayout readSensorLayout(JsonPlace const& place) {
    SensorLayout layout;
    layout.kind = place["kind"].integer();
    layout.variant = place["variant"].integer();
    layout.width = place["width"].integer(1, kLargestSide);
    layout.height = place["height"].integer(1, kLargestSide);
    layout.input = place["input"].text();
    if (layout.input != QLatin1String("bayer") && layout.input != QLatin1String("ycbcr") &&
        layout.input != QLatin1String("rgb32"))
        place["input"].fail(QStringLiteral("\"%1\" is none of bayer, ycbcr, rgb32").arg(layout.input));
    layout.sampleBytes = place["sampleBytes"].integer(1, 2);
    layout.blackLevel = place["blackLevel"].number(0, kLargestSample);
    layout.whiteLevel = place["whiteLevel"].number(0, kLargestSample);

    JsonPlace const correction = place["correction"];
    layout.originColumn = readRegisterPlace(correction["originColumn"]);
    layout.originRow = readRegisterPlace(correction["originRow"]);
    JsonPlace const bank = correction["banks"].items(1).front();
    if (bank["slot"].integer() != 0)
        bank["slot"].fail(QStringLiteral("only slot 0, the correction that always holds, is simulated"));
    JsonPlace const planes = bank["planes"];
    for (size_t plane = 0; plane < kPlaneCount; ++plane) {
        JsonPlace const coefficients = planes[kPlaneNames[plane]];
        layout.planes[plane] = {readRegisterPlace(coefficients), coefficients["stride"].integer(1, 0xFFFF)};
    }
    layout.text = layoutText(place.object());
    return layout;
}

} // namespace simulator
