#pragma once

#include "tools/headboard-image/outcome.h"
#include "tools/headboard-image/record_check.h"

#include <optional>

namespace headboard_image {
/// What keeps a chain from being whole: its header, or the way it ends. Such a store is not written to.
[[nodiscard]] std::optional<Finding> chainFault(RecordStore const& store, Chain const& chain);

/// The command `check`: header, chain, every record and the room that is left.
[[nodiscard]] Outcome checkImage(RecordStore const& store);
} // namespace headboard_image
