#include "tests/support/solver_input.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace {
double brightness(SyntheticLens const& lens, double squaredRadius) {
    if (lens.shape == SyntheticLens::Shape::CosineFourth)
        return std::pow(1 + (std::sqrt(lens.peakGain) - 1) * squaredRadius, -2);
    double const drop = 1 - 1 / lens.peakGain;
    return 1 - drop * (0.7 * squaredRadius + 0.3 * squaredRadius * squaredRadius);
}

/// Noise, saturation and defects of one sensor, reproducible.
class Readout {
public:
    Readout(TestSensor const& sensor, Exposure const& exposure) : m_sensor(sensor), m_exposure(exposure) {}

    int sample(double light) {
        if (m_exposure.deviantPixels > 0 && m_uniform(m_random) < m_exposure.deviantPixels)
            return m_uniform(m_random) < 0.5 ? 0 : m_sensor.whiteLevel;
        double const noisy = light + m_exposure.noise * m_normal(m_random);
        double const counts = m_sensor.blackLevel + noisy * (m_sensor.whiteLevel - m_sensor.blackLevel);
        return static_cast<int>(std::clamp(std::round(counts), 0.0, double(m_sensor.whiteLevel)));
    }

private:
    TestSensor const& m_sensor;
    Exposure const& m_exposure;
    std::mt19937 m_random{17};
    std::normal_distribution<double> m_normal;
    std::uniform_real_distribution<double> m_uniform{0, 1};
};

char byte(double value) {
    return static_cast<char>(std::clamp(static_cast<int>(std::lround(value)), 0, 255));
}
} // namespace

QByteArray TestSensor::layout() const {
    auto const place = [](char const* key, uint32_t address, char const* more = "") {
        return QString::asprintf(R"("%s": {"id": 0, "address": %u%s})", key, address, more);
    };
    QStringList banks;
    for (int const bankSlot : bankSlots) {
        auto const slot = uint32_t(bankSlot);
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
    return "sensor-layout-1\n" +
           QString::asprintf(R"({"kind": 50, "variant": 1, "width": %d, "height": %d, "input": "%s",
 "sampleBytes": %d, "blackLevel": %d, "whiteLevel": %d, )",
                             width, height, input, sampleBytes, blackLevel, whiteLevel)
               .toUtf8() +
           QStringList{R"("correction": {)" + place("originColumn", kOriginColumn),
                       place("originRow", kOriginRow), "\"banks\": [" + banks.join(",\n")}
               .join(", ")
               .toUtf8() +
           "]}}\n";
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
    if (list == nullptr)
        return {};
    return {list->entries, list->entries + list->count};
}

double sensitivity(Colour colour) {
    constexpr double kSensitivities[] = {0.7, 1.0, 0.55, 1.0};
    return kSensitivities[colour];
}

Response SyntheticLens::response(TestSensor const& sensor) const {
    SyntheticLens const lens = *this;
    double const halfWidth = 0.5 * sensor.width;
    double const halfHeight = 0.5 * sensor.height;
    // The corner that lies farthest from the lens's centre has radius 1.
    double const farthest =
        std::hypot(halfWidth * (1 + std::abs(offsetX)), halfHeight + halfWidth * std::abs(offsetY));
    return [lens, halfWidth, halfHeight, farthest](Colour colour, double x, double y) {
        double const u = (x - halfWidth) / halfWidth;
        double const v = (y - halfHeight) / halfHeight;
        double const radius =
            std::hypot((u - lens.offsetX) * halfWidth, v * halfHeight - lens.offsetY * halfWidth) / farthest;
        double const light = brightness(lens, radius * radius);
        double const field = 0.5 * (u * u + v * v); // 0 in the middle, 1 in the corners
        if (colour == kColourRed)
            return light * (1 - lens.spread * (0.8 * field + 0.1 * u + 0.1 * u * v));
        if (colour == kColourBlue)
            return light * (1 + 0.4 * lens.spread * (0.7 * field - 0.3 * v));
        return colour == kColourGreenBlue ? light * (1 + 0.03 * u) : light;
    };
}

QByteArray expose(TestSensor const& sensor, Response const& response, Exposure const& exposure) {
    bool const bayer = std::strcmp(sensor.input, "bayer") == 0;
    bool const ycbcr = std::strcmp(sensor.input, "ycbcr") == 0;
    QByteArray frame;
    Readout readout(sensor, exposure);
    for (int row = 0; row < sensor.height; ++row) {
        for (int column = 0; column < sensor.width; ++column) {
            double const x = 0.5 + ((exposure.orientation & 1) != 0 ? sensor.width - 1 - column : column);
            double const y = 0.5 + ((exposure.orientation & 2) != 0 ? sensor.height - 1 - row : row);
            auto const light = [&](Colour colour) {
                return exposure.level * sensitivity(colour) * response(colour, x, y);
            };
            if (bayer) {
                bool const redColumn = (column & 1) == static_cast<int>(exposure.bayerPhase & 1);
                bool const redRow = (row & 1) == static_cast<int>(exposure.bayerPhase >> 1);
                Colour const colour = redRow ? (redColumn ? kColourRed : kColourGreen)
                                             : (redColumn ? kColourGreenBlue : kColourBlue);
                int const sample = readout.sample(light(colour));
                frame.append(static_cast<char>(sample & 0xFF));
                if (sensor.sampleBytes == 2)
                    frame.append(static_cast<char>(sample >> 8));
                continue;
            }
            double const red = readout.sample(light(kColourRed));
            double const green = readout.sample(light(kColourGreen));
            double const blue = readout.sample(light(kColourBlue));
            if (ycbcr) {
                // ITU-R BT.601, full range.
                double const luma = 0.299 * red + 0.587 * green + 0.114 * blue;
                frame.append(byte(luma));
                frame.append(byte(128 + ((column & 1) == 0 ? (blue - luma) / 1.772 : (red - luma) / 1.402)));
            } else {
                frame.append(byte(blue)).append(byte(green)).append(byte(red)).append('\0');
            }
        }
    }
    return frame;
}
