#pragma once

#include "simulator/camera/register_map.h"
#include "simulator/files/json_place.h"

#include <vector>

namespace simulator {
/// Reads the register groups of a profile: an object whose members are arrays of registers. A register with
/// `indices` is a family: its name holds a place such as {p} for each index, or {i:3} for one of three
/// digits, and an index may have `words` instead of
/// a count; the last index runs fastest, and the addresses are `stride` apart. `reset` is one value or an
/// array, whose last value holds for all further registers of the family.
[[nodiscard]] std::vector<RegisterDefinition> readRegisters(files::JsonPlace const& place,
                                                            uint32_t addressWidth);
} // namespace simulator
