#pragma once

#include "headboard/headboard_eeprom.h"

/// Builds a register set of a type from a section of a preset file (name in UTF-8), under the section's name,
/// and appends it to the chain. Lines of registers, variables, special functions and memory become entries;
/// lines of state are taken in the types that know their names; all others are skipped. `kEepromFailed` when
/// there is no such section or the type is no register set; nothing is appended when a line finds no room
/// (`kEepromNoRoom`), or when entries follow lines of state (`kEepromFailed`).
[[nodiscard]] int32_t EepromImportSection(HeadboardEeprom eeprom, char const* iniFileName,
                                          char const* sectionName, uint8_t type);
