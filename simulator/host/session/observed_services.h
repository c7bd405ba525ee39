#pragma once

#include "published/host_records.h"

namespace pictara {
/// The service desk's table with each of its 33 functions told to the boundary's observers.
[[nodiscard]] HostServices const& observedServices();
} // namespace pictara
