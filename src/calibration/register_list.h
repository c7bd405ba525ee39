#pragma once

#include "calibration/page_core.h"

#include <functional>
#include <optional>
#include <vector>

/// The registers of a calibration's solution, copied from the library. Empty when it has none: no list, or a
/// list that promises entries and has no pointer to them. A negative count is no entries.
[[nodiscard]] std::optional<std::vector<sf_RegEntry>> dumpRegisterList(ShadingHandle const& handle);

/// Writes the entries into the sensor through the host, in order, as long as `goOn` answers true after each:
/// the page may be reset or deleted from inside a write. False when it did not write all.
[[nodiscard]] bool writeRegisterList(Host const& host, std::vector<sf_RegEntry> const& entries,
                                     std::function<bool()> const& goOn);
