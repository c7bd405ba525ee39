#pragma once

#include <cstdint>

namespace solver {
/// Rounds to the nearest IEEE 754 binary16, ties to even; beyond the largest finite value the largest finite
/// value (a register must not hold an infinity).
[[nodiscard]] uint16_t toBinary16(double value);

/// The value of a binary16.
[[nodiscard]] double fromBinary16(uint16_t bits);
} // namespace solver
