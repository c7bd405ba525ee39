#include "simulator/files/sensor_layout.h"

#include <QJsonDocument>
#include <algorithm>

namespace simulator {
namespace {
using files::JsonPlace;

constexpr char kFirstLine[] = "sensor-layout-1\n";
constexpr uint32_t kSmallestSide = 48;     // pixels; below, there are fewer blocks than coefficients
constexpr uint32_t kLargestSide = 1 << 16; // pixels; the origin is a 16-bit register
constexpr uint32_t kLargestStride = 0xFFFF;
constexpr uint32_t kLargestAddress = 0xFFFFFFFF - kCoefficientCount * kLargestStride;

RegisterPlace readRegister(JsonPlace const& place) {
    return {place["id"].integer(0, 0xFFFF), place["address"].integer(0, kLargestAddress)};
}

SensorLayout::Origin readOrigin(JsonPlace const& place) {
    return {readRegister(place["originColumn"]), readRegister(place["originRow"])};
}

SensorLayout::Bank readBank(JsonPlace const& place) {
    SensorLayout::Bank bank{.slot = place["slot"].integer(0, kTableSlots.back())};
    if (bank.slot != kBaseSlot && bank.slot < kTableSlots.front())
        place["slot"].fail(QStringLiteral("%1 is none of 0, 2, 3, 4").arg(bank.slot));
    JsonPlace const planes = place["planes"];
    for (size_t plane = 0; plane < kPlaneCount; ++plane) {
        JsonPlace const coefficients = planes[kPlaneKeys[plane]];
        bank.planes[plane] = {readRegister(coefficients), coefficients["stride"].integer(1, kLargestStride)};
    }
    if (place.has("originColumn") || place.has("originRow"))
        bank.origin = readOrigin(place);
    if (place.has("colourTemperature"))
        bank.colourTemperature = readRegister(place["colourTemperature"]);
    return bank;
}
} // namespace

SensorLayout::Bank const* SensorLayout::bank(uint32_t slot) const {
    auto const found =
        std::find_if(banks.begin(), banks.end(), [&](Bank const& entry) { return entry.slot == slot; });
    return found == banks.end() ? nullptr : &*found;
}

SensorLayout readSensorLayout(JsonPlace const& place) {
    using Input = SensorLayout::Input;
    SensorLayout layout{.kind = place["kind"].integer(),
                        .variant = place["variant"].integer(),
                        .width = place["width"].integer(kSmallestSide, kLargestSide),
                        .height = place["height"].integer(kSmallestSide, kLargestSide),
                        .input = Input(place["input"].choice({"bayer", "ycbcr", "rgb32"})),
                        .sampleBytes = place["sampleBytes"].integer(1, 2)};
    if (layout.sampleBytes == 2 && layout.input != Input::Bayer)
        place["sampleBytes"].fail(QStringLiteral("only Bayer samples can be that wide"));
    layout.blackLevel = place["blackLevel"].number(0, 0xFFFF);
    layout.whiteLevel = place["whiteLevel"].number(1, layout.sampleBytes == 2 ? 0xFFFF : 0xFF);
    if (layout.whiteLevel <= layout.blackLevel)
        place["whiteLevel"].fail(QStringLiteral("it is not above blackLevel"));
    JsonPlace const correction = place["correction"];
    layout.origin = readOrigin(correction); // told even where every bank has its own
    for (JsonPlace const& item : correction["banks"].someItems(1 + kTableSlots.size(), "bank")) {
        SensorLayout::Bank const bank = readBank(item);
        if (layout.bank(bank.slot))
            item["slot"].fail(QStringLiteral("%1 occurs twice").arg(bank.slot));
        layout.banks.push_back(bank);
    }
    return layout;
}

QByteArray sensorLayoutBlock(QJsonObject const& layout) {
    return kFirstLine + QJsonDocument(layout).toJson(QJsonDocument::Compact);
}

std::optional<SensorLayout> parseSensorLayout(char const* block, QString const& name, QString* error) {
    error->clear();
    if (!block)
        *error = QStringLiteral("there is no %1").arg(name);
    else if (qstrncmp(block, kFirstLine, sizeof kFirstLine - 1) != 0)
        *error = QStringLiteral("%1: the first line is not sensor-layout-1").arg(name);
    // A blank first line, so that faults are told by the block's own lines.
    else if (auto const object = files::parseJson(QByteArray(block + sizeof kFirstLine - 2), name, error)) {
        SensorLayout layout = readSensorLayout(JsonPlace(*object, name, error));
        if (error->isEmpty())
            return layout;
    }
    return std::nullopt;
}
} // namespace simulator
