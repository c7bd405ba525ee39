#pragma once

#include "simulator/camera/json_place.h"
#include "simulator/camera/sensor_array.h"

#include <QByteArray>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {
inline constexpr uint32_t kPolynomialTerms = 5; ///< powers 0 to 4 in each direction
inline constexpr uint32_t kCoefficientCount = kPolynomialTerms * kPolynomialTerms;

/// A register of the sensor's own address space.
struct RegisterPlace {
    uint32_t id = 0;
    uint32_t address = 0;
};

/// The base, and the tables for the light of an incandescent lamp (left), a fluorescent one (middle) and
/// daylight (right).
inline constexpr uint32_t kBaseSlot = 0;
inline constexpr size_t kTableCount = 3;
inline constexpr std::array<uint32_t, kTableCount> kTableSlots = {2, 3, 4};

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

    /// A polynomial for each plane.
    struct Bank {
        uint32_t slot = kBaseSlot;
        RegisterPlace originColumn; ///< its own, or that of the correction
        RegisterPlace originRow;
        std::array<Coefficients, kPlaneCount> planes;   ///< in the order of `Plane`
        std::optional<RegisterPlace> colourTemperature; ///< of a table, where a solution tells it
    };

    uint32_t kind = 0;
    uint32_t variant = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    QString input; ///< "bayer", "ycbcr" or "rgb32"
    uint32_t sampleBytes = 1;
    double blackLevel = 0;
    double whiteLevel = 0;
    std::vector<Bank> banks; ///< in the file's order; at least a base, or else all tables
    QByteArray text;         ///< the block as `sensorData` holds it

    /// Whether there is a table for each illuminant.
    [[nodiscard]] bool hasTables() const;
    /// Null when there is none.
    [[nodiscard]] Bank const* bank(uint32_t slot) const;
};

/// A sensor has all tables or none.
[[nodiscard]] SensorLayout readSensorLayout(JsonPlace const& place);
} // namespace simulator
