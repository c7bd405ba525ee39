#include "tests/support/solver_input.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

QByteArray TestSensor::layout() const {
    auto const place = [](char const* key, uint32_t address, char const* more = "") {
        return QString::asprintf(R"("%s": {"id": 0, "address": %u%s})", key, address, more);
    };
    QStringList banks;
    for (uint32_t const slot : bankSlots) {
        QStringList planes;
        for (char const* const plane : {"greenRed", "red", "blue", "greenBlue"})
            planes += place(plane, planeAddress(slot, uint32_t(planes.size())), R"(, "stride": 2)");
        QStringList bank{QString::asprintf(R"("slot": %u, "planes": {)", slot) + planes.join(", ") + '}'};
        if (slot != 0 && tablesHaveOrigins)
            bank << place("originColumn", originColumnAddress(slot))
                 << place("originRow", originRowAddress(slot));
        if (slot != 0 && tablesHaveTemperatures)
            bank << place("colourTemperature", temperatureAddress(slot));
        banks += '{' + bank.join(", ") + '}';
    }
    QStringList const correction{place("originColumn", kOriginColumn), place("originRow", kOriginRow),
                                 "\"banks\": [" + banks.join(",\n") + ']'};
    return QByteArray("sensor-layout-1\n") +
           QString::asprintf(R"({"kind": 50, "variant": 1, "width": %d, "height": %d, "input": "%s",
 "sampleBytes": %d, "blackLevel": %d, "whiteLevel": %d, "correction": {)",
                             width, height, input, sampleBytes, blackLevel, whiteLevel)
               .toUtf8() +
           correction.join(", ").toUtf8() + "}}\n";
}

Handle open(TestSensor const& sensor) {
    return Handle(sf_Create2(sensor.layout().constData(), 50, 1, 0xFFFFFFFF));
}

bool setImage(Handle const& handle, TestSensor const& sensor, QByteArray const& frame, uint32_t bayerPhase,
              uint32_t orientation) {
    auto const width = uint32_t(sensor.width), height = uint32_t(sensor.height);
    sf_YcbcrInput const coding{sizeof coding, 0, {0, 1, 2, 3}, 0, 255, 255, 128, orientation};
    return (std::strcmp(sensor.input, "ycbcr") == 0
                ? sf_SetInputImageYcbcr(handle.get(), frame.constData(), width, height, &coding, -1, -1)
                : sf_SetInputImage2(handle.get(), frame.constData(), width, height, 12, bayerPhase,
                                    orientation, 0, -1, -1)) != 0;
}

int findSolution(Handle const& handle, uint32_t falloffPercent, uint32_t radius) {
    sf_SolutionParams params{};
    params.size = sizeof params;
    params.falloffPercent = falloffPercent;
    params.radius = radius;
    return sf_FindSolution(handle.get(), &params);
}

sf_ApgaParams tableParams(uint32_t slot, uint32_t colourTemperature) {
    sf_ApgaParams params{};
    params.size = sizeof params;
    params.falloffPercent = 100;
    params.colourTemperature = colourTemperature;
    params.illuminantSlot = slot;
    return params;
}

std::vector<sf_RegEntry> registers(Handle const& handle) {
    sf_RegList const* const list = sf_DumpRegList(handle.get());
    return list ? std::vector(list->entries, list->entries + list->count) : std::vector<sf_RegEntry>();
}

Response SyntheticLens::response(TestSensor const& sensor) const {
    double const halfWidth = 0.5 * sensor.width, halfHeight = 0.5 * sensor.height;
    // The corner that lies farthest from the lens's centre has radius 1.
    double const farthest =
        std::hypot(halfWidth * (1 + std::abs(offsetX)), halfHeight + halfWidth * std::abs(offsetY));
    return [lens = *this, halfWidth, halfHeight, farthest](Colour colour, double x, double y) {
        double const u = (x - halfWidth) / halfWidth, v = (y - halfHeight) / halfHeight;
        double const radius =
            std::hypot((u - lens.offsetX) * halfWidth, v * halfHeight - lens.offsetY * halfWidth) / farthest;
        double const square = radius * radius, drop = 1 - 1 / lens.peakGain;
        double const light = lens.shape == Shape::CosineFourth
                                 ? std::pow(1 + (std::sqrt(lens.peakGain) - 1) * square, -2)
                                 : 1 - drop * (0.7 * square + 0.3 * square * square);
        double const field = 0.5 * (u * u + v * v); // 0 in the middle, 1 in the corners
        if (colour == kColourRed)
            return light * (1 - lens.spread * (0.8 * field + 0.1 * u + 0.1 * u * v));
        if (colour == kColourBlue)
            return light * (1 + 0.4 * lens.spread * (0.7 * field - 0.3 * v));
        return colour == kColourGreenBlue ? light * (1 + 0.03 * u) : light;
    };
}

QByteArray expose(TestSensor const& sensor, Response const& response, Exposure const& exposure) {
    static constexpr double kSensitivities[] = {0.7, 1.0, 0.55, 1.0};
    QByteArray frame;
    std::mt19937 random{17};
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform{0, 1};
    for (int i = 0; i < sensor.width * sensor.height; ++i) {
        int const column = i % sensor.width, row = i / sensor.width;
        auto const sample = [&](Colour colour) {
            if (exposure.deviantPixels > 0 && uniform(random) < exposure.deviantPixels)
                return uniform(random) < 0.5 ? 0 : sensor.whiteLevel;
            double const x = 0.5 + ((exposure.orientation & 1) != 0 ? sensor.width - 1 - column : column);
            double const y = 0.5 + ((exposure.orientation & 2) != 0 ? sensor.height - 1 - row : row);
            double const light = exposure.level * kSensitivities[colour] * response(colour, x, y) +
                                 exposure.noise * normal(random);
            double const counts = sensor.blackLevel + light * (sensor.whiteLevel - sensor.blackLevel);
            return int(std::clamp(std::round(counts), 0.0, double(sensor.whiteLevel)));
        };
        auto const append = [&](double byte) { frame += char(std::clamp(int(std::lround(byte)), 0, 255)); };
        if (std::strcmp(sensor.input, "bayer") == 0) {
            bool const redColumn = unsigned(column & 1) == (exposure.bayerPhase & 1);
            bool const redRow = unsigned(row & 1) == exposure.bayerPhase >> 1;
            int const counts = sample(redRow ? (redColumn ? kColourRed : kColourGreen)
                                             : (redColumn ? kColourGreenBlue : kColourBlue));
            append(counts & 0xFF);
            if (sensor.sampleBytes == 2)
                append(counts >> 8);
            continue;
        }
        double const red = sample(kColourRed), green = sample(kColourGreen), blue = sample(kColourBlue);
        if (std::strcmp(sensor.input, "ycbcr") == 0) {
            // ITU-R BT.601, full range.
            double const luma = 0.299 * red + 0.587 * green + 0.114 * blue;
            append(luma);
            append(128 + ((column & 1) == 0 ? (blue - luma) / 1.772 : (red - luma) / 1.402));
        } else {
            for (double const channel : {blue, green, red, 0.0})
                append(channel);
        }
    }
    return frame;
}
