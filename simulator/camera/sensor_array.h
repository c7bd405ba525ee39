#pragma once

#include "simulator/files/sensor_layout.h"

#include <cstddef>
#include <cstdint>

namespace simulator {
/// The pixel array and how it is read out.
struct SensorArray {
    uint32_t width = 0;       ///< pixels
    uint32_t height = 0;      ///< pixels
    uint32_t bayerPhase = 0;  ///< bit 0: column, bit 1: row of the first red pixel of the array itself
    uint32_t orientation = 0; ///< bit 0: the read-out mirrors, bit 1: it turns upside down

    [[nodiscard]] size_t pixels() const { return size_t(width) * height; }
    [[nodiscard]] bool isMirrored() const { return (orientation & 1) != 0; }
    [[nodiscard]] bool isUpsideDown() const { return (orientation & 2) != 0; }
    /// Row of the array that the delivered frame shows in `row`, and the other way round.
    [[nodiscard]] uint32_t arrayRow(uint32_t row) const { return isUpsideDown() ? height - 1 - row : row; }

    [[nodiscard]] Plane planeAt(uint32_t x, uint32_t y) const {
        bool const redColumn = ((x ^ bayerPhase) & 1) == 0;
        bool const redRow = ((y ^ (bayerPhase >> 1)) & 1) == 0;
        if (redRow)
            return redColumn ? Plane::Red : Plane::GreenRed;
        return redColumn ? Plane::GreenBlue : Plane::Blue;
    }

    /// The phase of the delivered frame: a mirrored row of even length begins with the other colour.
    [[nodiscard]] uint32_t deliveredPhase() const {
        uint32_t const column = isMirrored() ? (width - 1 - bayerPhase) & 1 : bayerPhase & 1;
        uint32_t const redRow = bayerPhase >> 1;
        uint32_t const row = isUpsideDown() ? (height - 1 - redRow) & 1 : redRow & 1;
        return column | (row << 1);
    }
};
} // namespace simulator
