#pragma once

#include "simulator/camera/json_place.h"
#include "simulator/camera/sensor_array.h"

#include <QByteArray>
#include <array>
#include <cstdint>

namespace simulator {

inline constexpr uint32_t kPolynomialTerms = 5; ///< powers 0 to 4 in each direction
inline constexpr uint32_t kCoefficientCount = kPolynomialTerms * kPolynomialTerms;

/// A register of the sensor's own address space.
struct RegisterPlace {
    uint32_t id = 0;
    uint32_t address = 0;
};

/// Where a sensor's correction lies in its registers and how its calibration frames are coded.
struct SensorLayout {
    /// The coefficients c(p, q) of one plane: c(p, q) lies at address + stride * (5 p + q).
    struct Coefficients {
        RegisterPlace first;
        uint32_t stride = 0;

        [[nodiscard]] RegisterPlace place(uint32_t index) const {
            return {first.id, first.address + stride * index};
        }
    };

    uint32_t kind = 0;
    uint32_t variant = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    QString input; ///< "bayer", "ycbcr" or "rgb32"
    uint32_t sampleBytes = 1;
    double blackLevel = 0;
    double whiteLevel = 0;
    RegisterPlace originColumn;
    RegisterPlace originRow;
    std::array<Coefficients, kPlaneCount> planes; ///< in the order of `Plane`
    QByteArray text;                              ///< the block as `sensorData` holds it
};

[[nodiscard]] SensorLayout readSensorLayout(JsonPlace const& place);

} // namespace simulator
