#pragma once

#include "simulator/solver/block_means.h"

#include <QString>
#include <vector>

namespace solver {
/// What the blocks of an input image are worth.
struct Inspection {
    std::vector<bool> trusted; ///< false where dust or a speck spoils it; of an image that is not refused
    std::vector<bool> refused; ///< what an image is refused for; empty where that is the whole picture
};

/// Tells an evenly lit field from one that is too dark, clipped, holds an object or is lit from one side. A
/// lens whose centre is offset by up to 0.1 of the array's half-width passes. From one picture a lamp's
/// gradient cannot be told from such an offset, so only what goes beyond it is refused:
/// false, with the reason and its figures in `error`.
[[nodiscard]] bool inspect(BlockMeans const& means, Geometry const& array, Inspection& inspection,
                           QString* error);
} // namespace solver
