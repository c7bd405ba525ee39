#include "simulator/camera/sensor_layout.h"

#include <QJsonDocument>
#include <algorithm>

namespace simulator {
namespace {
constexpr uint32_t kLargestSide = 16384; // pixels
constexpr double kLargestSample = 65535;

RegisterPlace readRegisterPlace(JsonPlace const& place) {
    return {place["id"].integer(0, 0xFFFF), place["address"].integer()};
}

SensorLayout::Bank readBank(JsonPlace const& place, JsonPlace const& correction) {
    SensorLayout::Bank bank;
    bank.slot = place["slot"].integer(0, kTableSlots.back());
    if (bank.slot != kBaseSlot && bank.slot < kTableSlots.front())
        place["slot"].fail(QStringLiteral("%1 is none of 0, 2, 3, 4").arg(bank.slot));
    JsonPlace const& origin = place.has("originColumn") ? place : correction;
    bank.originColumn = readRegisterPlace(origin["originColumn"]);
    bank.originRow = readRegisterPlace(origin["originRow"]);
    JsonPlace const planes = place["planes"];
    for (size_t plane = 0; plane < kPlaneCount; ++plane) {
        JsonPlace const coefficients = planes[kPlaneNames[plane]];
        bank.planes[plane] = {readRegisterPlace(coefficients), coefficients["stride"].integer(1, 0xFFFF)};
    }
    if (place.has("colourTemperature"))
        bank.colourTemperature = readRegisterPlace(place["colourTemperature"]);
    return bank;
}

void readBanks(JsonPlace const& correction, SensorLayout& layout) {
    JsonPlace const banks = correction["banks"];
    for (JsonPlace const& place : banks.items()) {
        SensorLayout::Bank const bank = readBank(place, correction);
        if (layout.bank(bank.slot))
            place["slot"].fail(QStringLiteral("%1 occurs twice").arg(bank.slot));
        layout.banks.push_back(bank);
    }
    auto const tables = std::count_if(kTableSlots.begin(), kTableSlots.end(),
                                      [&](uint32_t slot) { return layout.bank(slot) != nullptr; });
    if (tables != 0 && size_t(tables) != kTableCount)
        banks.fail(QStringLiteral("of the slots 2, 3, 4 some are missing"));
    if (layout.banks.empty())
        banks.fail(QStringLiteral("at least one bank is needed"));
}

QByteArray layoutText(QJsonObject const& object) {
    return QByteArrayLiteral("sensor-layout-1\n") + QJsonDocument(object).toJson(QJsonDocument::Compact);
}
} // namespace

bool SensorLayout::hasTables() const {
    return std::all_of(kTableSlots.begin(), kTableSlots.end(),
                       [&](uint32_t slot) { return bank(slot) != nullptr; });
}

SensorLayout::Bank const* SensorLayout::bank(uint32_t slot) const {
    auto const found =
        std::find_if(banks.begin(), banks.end(), [&](Bank const& entry) { return entry.slot == slot; });
    return found == banks.end() ? nullptr : &*found;
}

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
    // Told even where every bank has its own: a solution begins with it.
    (void)readRegisterPlace(correction["originColumn"]);
    (void)readRegisterPlace(correction["originRow"]);
    readBanks(correction, layout);
    layout.text = layoutText(place.object());
    return layout;
}
} // namespace simulator
