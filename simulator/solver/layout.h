#pragma once

#include "simulator/solver/geometry.h"
#include "simulator/solver/planes.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace solver {
struct RegisterPlace {
    uint32_t id = 0; ///< page or id
    uint32_t address = 0;
};

/// Registers of one plane's coefficients, c(p, q) at `address + stride * (5 p + q)`.
struct PlaneRegisters {
    RegisterPlace first;
    uint32_t stride = 0;
};

/// Registers of a correction's origin, in whole pixels of the array.
struct OriginRegisters {
    RegisterPlace column;
    RegisterPlace row;
};

/// The correction that always holds (slot 0), or the table for the illuminant of a slot.
struct BankRegisters {
    uint32_t slot = 0;
    PerPlane<PlaneRegisters> planes;
    std::optional<OriginRegisters> origin;          ///< none: that of the correction
    std::optional<RegisterPlace> colourTemperature; ///< none: the sensor knows it by itself
};

enum class Input { Bayer, Ycbcr, Rgb32 };

/// What registers hold a sensor's correction, and how its calibration frames are coded
/// (docs/sensor-layout.md). It says nothing of the lens.
struct SensorLayout {
    uint32_t kind = 0;
    uint32_t variant = 0;
    Geometry array;
    Input input = Input::Bayer;
    int sampleBytes = 1;
    double blackLevel = 0;
    double whiteLevel = 0;
    OriginRegisters origin;
    std::vector<BankRegisters> banks;

    /// The bank of a slot, or null.
    [[nodiscard]] BankRegisters const* bank(uint32_t slot) const;
};

/// Reads a layout file's content; empty, with what is wrong and where in `error`, when it is malformed.
[[nodiscard]] std::optional<SensorLayout> parseLayout(QByteArray const& text, QString* error);

/// Reads the block that a sensor description points to. Looks at no byte beyond the first one that differs
/// from a layout's first line, so that foreign data is told apart safely. Empty with the reason in `error`.
[[nodiscard]] std::optional<SensorLayout> parseSensorData(void const* sensorData, QString* error);
} // namespace solver
