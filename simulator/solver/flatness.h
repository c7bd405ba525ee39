#pragma once

#include "simulator/solver/block_means.h"

#include <QString>

namespace solver {
/// What an input image is worth.
struct Inspection {
    QString fault;     ///< why it is refused, with figures; empty when it is not
    BlockMask refused; ///< what it is refused for; empty where that is the whole picture
    BlockMask trusted; ///< false where dust or a speck spoils a block; of an image that is not refused
};

/// Tells an evenly lit field from one that is too dark, clipped, holds an object or is lit from one side. A
/// lens whose centre is offset by up to 0.1 of the array's half-width passes. From one picture a lamp's
/// gradient cannot be told from such an offset, so only what goes beyond it is refused.
[[nodiscard]] Inspection inspect(BlockMeans const& means, SensorLayout const& layout);
} // namespace solver
