#pragma once

#include "simulator/solver/block_means.h"

#include <QString>
#include <vector>

namespace solver {

/// What an input image is worth.
struct Inspection {
    QString fault;             ///< empty, or why the image is refused, with figures
    std::vector<bool> trusted; ///< per block: false where dust or a speck spoils it
    std::vector<bool> refused; ///< per block: what the fault is about; empty where that is the whole picture
};

/// Tells an evenly lit field from one that is too dark, clipped, holds an object or is lit from one side. A
/// lens whose centre is offset by up to 0.1 of the array's half-width passes. From one picture a lamp's
/// gradient cannot be told from such an offset, so only what goes beyond it is refused.
[[nodiscard]] Inspection inspect(BlockMeans const& means, Geometry const& array);

} // namespace solver
