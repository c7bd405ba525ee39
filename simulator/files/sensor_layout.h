#pragma once

#include "simulator/files/json_place.h"

#include <QByteArray>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {
/// The colour planes of a Bayer mosaic, in the order in which a register list names them; `GreenRed` is the
/// green of the rows that hold red.
enum Plane : uint32_t { GreenRed, Red, Blue, GreenBlue };
inline constexpr size_t kPlaneCount = 4;

/// The planes in layouts and profiles.
inline constexpr std::array<char const*, kPlaneCount> kPlaneKeys = {"greenRed", "red", "blue", "greenBlue"};

/// One value for each plane.
template <typename T>
using PerPlane = std::array<T, kPlaneCount>;

inline constexpr uint32_t kPolynomialTerms = 5; ///< powers 0 to 4 in each direction
inline constexpr uint32_t kCoefficientCount = kPolynomialTerms * kPolynomialTerms;

/// The slots of a correction's banks: the base, and the tables for the light of an incandescent lamp (left),
/// a fluorescent one (middle) and daylight (right).
inline constexpr uint32_t kBaseSlot = 0;
inline constexpr std::array<uint32_t, 3> kTableSlots = {2, 3, 4};

/// A register of the sensor's own address space.
struct RegisterPlace {
    uint32_t id = 0; ///< page or id
    uint32_t address = 0;
};

/// What registers hold a sensor's correction, and how its calibration frames are coded
/// (docs/sensor-layout.md). It says nothing of the lens.
struct SensorLayout {
    enum class Input { Bayer, Ycbcr, Rgb32 };

    /// Registers of the origin, in whole pixels of the array.
    struct Origin {
        RegisterPlace column;
        RegisterPlace row;
    };

    /// The coefficients c(p, q) of one plane: c(p, q) lies at address + stride * (5 p + q).
    struct Coefficients {
        RegisterPlace first;
        uint32_t stride = 0;

        [[nodiscard]] RegisterPlace place(uint32_t index) const {
            return {first.id, first.address + stride * index};
        }
    };

    /// A polynomial for each plane: the correction that always holds, or the table for an illuminant.
    struct Bank {
        uint32_t slot = kBaseSlot;
        PerPlane<Coefficients> planes{};
        std::optional<Origin> origin{};                   ///< none: that of the correction
        std::optional<RegisterPlace> colourTemperature{}; ///< none: the sensor knows it by itself
    };

    uint32_t kind = 0;
    uint32_t variant = 0;
    uint32_t width = 0;  ///< pixels of the array
    uint32_t height = 0; ///< pixels
    Input input = Input::Bayer;
    uint32_t sampleBytes = 1;
    double blackLevel = 0; ///< counts of a sample
    double whiteLevel = 0;
    Origin origin{};
    std::vector<Bank> banks{}; ///< in the file's order, one at least

    /// The bank of a slot, or null.
    [[nodiscard]] Bank const* bank(uint32_t slot) const;
    [[nodiscard]] Origin const& originOf(Bank const& bank) const {
        return bank.origin ? *bank.origin : origin;
    }
};

[[nodiscard]] SensorLayout readSensorLayout(files::JsonPlace const& place);

/// The block that holds a layout in memory or in a file, and the way back: empty with the place and the cause
/// in `error`, in which `name` stands for the block, when there is none or it is malformed. Of a block of
/// another make no byte is looked at beyond the first one that differs.
[[nodiscard]] QByteArray sensorLayoutBlock(QJsonObject const& layout);
[[nodiscard]] std::optional<SensorLayout> parseSensorLayout(char const* block, QString const& name,
                                                            QString* error);
} // namespace simulator
