#pragma once

#include "hardening/power_cuts/tally.h"

namespace power_cuts {

/// Cuts the power after every byte of the scene's save, looks at what is left each time, and mends it.
[[nodiscard]] Tally cutEverywhere(uint32_t sceneNumber);

} // namespace power_cuts
