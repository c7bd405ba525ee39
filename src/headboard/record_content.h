#pragma once

#include "headboard/headboard_eeprom.h"
#include "headboard/record_format.h"
#include "headboard/register_entry.h"

#include <span>
#include <string>

// What stands behind the name in a register set: entries in blocks of one kind each, or lines of text.
// Entries are coded as the open sensor needs it; without a camera the plainest way is taken.

/// Adds an entry; one without a size gets that of its register in the sensor's map. `kEepromNoRoom` when the
/// record's capacity is used up, `kEepromFailed` when the record holds something else than entries.
[[nodiscard]] int32_t EepromAddEntry(HeadboardEeprom eeprom, EepromRecord& record, RegisterEntry entry);

/// Adds a register, or one of its bitfields, by name with a value. `kEepromFailed` when the sensor lacks it.
/// An empty bitfield name means the whole register.
[[nodiscard]] int32_t EepromAddRegister(HeadboardEeprom eeprom, EepromRecord& record, char const* reg,
                                        char const* bitfield, uint32_t value);

/// The same with the value that the sensor holds now.
[[nodiscard]] int32_t EepromAddRegisterCurrent(HeadboardEeprom eeprom, EepromRecord& record, char const* reg,
                                               char const* bitfield);

/// Adds a line of text with its NUL; `kEepromNoRoom` when it does not fit.
[[nodiscard]] int32_t EepromAddLine(EepromRecord& record, std::string const& text);

/// The n-th entry of a record's bytes, header included; they may come from anywhere. `kEepromFailed` when
/// there are fewer.
[[nodiscard]] int32_t EepromGetEntry(HeadboardEeprom eeprom, std::span<uint8_t const> record, int32_t n,
                                     RegisterEntry& entry);

/// The length of the n-th line of a record's bytes, and in `line`, when given, its text; `kEepromFailed` when
/// there are fewer lines.
[[nodiscard]] int32_t EepromGetLine(std::span<uint8_t const> record, int32_t n, std::string* line = nullptr);
