#pragma once

#include "simulator/solver/block_means.h"

#include <Eigen/Core>
#include <vector>

namespace solver {
/// Per block whether all planes fit in with their neighbourhood: false where dust lies. `surface` is the
/// logarithm of the smooth brightness of each block, which is taken off first.
[[nodiscard]] std::vector<bool> blocksWithoutSpecks(BlockMeans const& means, Eigen::VectorXd const& surface);
} // namespace solver
