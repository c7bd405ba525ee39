#pragma once

#include "headboard/headboard_eeprom.h"
#include "headboard/register_set.h"

#include <string>
#include <vector>

namespace kestra {
/// Builds a register set of a type from a section of a preset file (name in UTF-8), under the section's name,
/// and appends it to the chain. Lines of registers, variables, special functions and memory become entries;
/// lines of state are taken in the types that know their names; all others are skipped. `kEepromFailed` when
/// there is no such section or the type is no register set; nothing is appended when a line finds no room
/// (`kEepromNoRoom`), or when entries follow lines of state (`kEepromFailed`).
[[nodiscard]] EepromStatus EepromImportSection(HeadboardEeprom& eeprom, char const* iniFileName,
                                               char const* sectionName, uint8_t type);

/// A line of a register, a variable, a special function or memory.
struct PresetEntry {
    std::string line; ///< in the form "key=numbers", without comment
    RegisterEntry entry;
    bool isWhole = true; ///< every number of the line has at most 32 bits; else the entry has the lower ones
};

/// What the lines of a section of a preset file become, in their order: one entry each. Without lines of
/// state and those that are skipped.
[[nodiscard]] std::vector<PresetEntry> presetEntries(char const* iniFileName, char const* sectionName);
} // namespace kestra
