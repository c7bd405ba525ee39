#pragma once

#include "calibration/page_core.h"

#include <optional>
#include <vector>

/// The registers of a calibration's solution, copied from the library. Empty when it has none: no list, or a
/// list that promises entries and has no pointer to them. A negative count is no entries.
[[nodiscard]] std::optional<std::vector<sf_RegEntry>> dumpRegisterList(ShadingHandle const& handle);

/// Writes the entries into the sensor through the host, in order. False when the page was reset or deleted
/// from inside a write; the rest is then not written.
[[nodiscard]] bool writeRegisterList(PageCore const& core, std::vector<sf_RegEntry> const& entries);
