#pragma once

#include <array>
#include <cstddef>

namespace solver {
/// The four colour planes of a sensor, in the order in which a register list names them. `GreenRed` is the
/// green of the rows that hold red.
enum Plane : size_t { kGreenRed, kRed, kBlue, kGreenBlue, kPlanes };

/// One value for each plane.
template <typename T>
using PerPlane = std::array<T, kPlanes>;
} // namespace solver
