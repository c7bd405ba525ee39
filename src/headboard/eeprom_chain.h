#pragma once

#include "headboard/headboard_eeprom.h"
#include "headboard/record_format.h"

#include <span>
#include <string_view>

namespace kestra {
// The chain of records in the EEPROM: a header ("VYEE" and a version), then records one behind the other,
// then a byte 0xFF. All operations work on the image and read from the device what they need; nothing reaches
// the device before `HeadboardEepromFlush`. Device failures come through as they are. No content of the
// device, however broken, leads out of the image or round in circles; record types unknown here keep their
// bytes.
//
// Offsets are those of the image. A name is compared without case; null means that any will do.

/// Stands for every record type, in `EepromReadNth` and `EepromDeleteNth`.
constexpr int32_t kAnyRecordType = -1;

/// Writes header and end of an empty chain into the image; version -1 is the usual one, of others the low
/// byte is taken. What else the device holds stays, unreachable.
[[nodiscard]] EepromStatus EepromFormat(HeadboardEeprom& eeprom, int32_t version);

/// `kEepromOk` for a formatted EEPROM, `kEepromNotFormatted` for another content.
[[nodiscard]] EepromStatus EepromCheckHeader(HeadboardEeprom& eeprom);

/// Bytes behind the chain, its end marker included. `used`, when given, takes the bytes of all records. An
/// EEPROM that is not formatted has all its room free.
[[nodiscard]] int32_t EepromFreeSpace(HeadboardEeprom& eeprom, int32_t* used = nullptr);

/// The offset of the first record of a type, and name, at `start` or behind it; `start` must be a record's
/// offset or below the first. The record at `start` counts too. Type `kRecordIdent` is at 0, `kRecordEnd` is
/// the end of the chain.
[[nodiscard]] int32_t EepromFindRecord(HeadboardEeprom& eeprom, uint8_t type, char const* name,
                                       int32_t start);

/// The offset of the record behind the one at `offset`; the end of the chain counts as one.
[[nodiscard]] int32_t EepromNextRecord(HeadboardEeprom& eeprom, int32_t offset);

/// Copies header and payload of a record and answers their size; a buffer without data only asks for it.
[[nodiscard]] int32_t EepromReadRecord(HeadboardEeprom& eeprom, int32_t offset, std::span<uint8_t> buffer);

/// The same for the record that `type`, `name` and `n` tell. With `kAnyRecordType` the records are counted
/// from 0 and the name does not matter; with a type, every `n` tells its first record.
[[nodiscard]] int32_t EepromReadNth(HeadboardEeprom& eeprom, int32_t type, char const* name, int32_t n,
                                    std::span<uint8_t> buffer);

/// Adds a record at the end of the chain; one byte stays free for the end marker.
[[nodiscard]] EepromStatus EepromAppendRecord(HeadboardEeprom& eeprom, EepromRecord const& record);

/// Takes a record out of the chain and moves up what follows.
[[nodiscard]] EepromStatus EepromDeleteRecord(HeadboardEeprom& eeprom, int32_t offset);

/// The same for a record told as in `EepromReadNth`.
[[nodiscard]] EepromStatus EepromDeleteNth(HeadboardEeprom& eeprom, int32_t type, char const* name,
                                           int32_t n);

/// Deletes the first record of the same type, and name where the type has one, and appends this. The old one
/// is gone from the image even when the new one finds no room.
[[nodiscard]] EepromStatus EepromReplaceRecord(HeadboardEeprom& eeprom, EepromRecord const& record);

/// The name of a named record or the text of a text record, without its NUL, where it stands in the image:
/// valid until the next operation on an EEPROM that the caller holds. Without data for other types, and when
/// it cannot be read.
[[nodiscard]] std::string_view EepromRecordText(HeadboardEeprom& eeprom, int32_t offset);

/// What is known of the headboard's EEPROM.
enum class EepromState : uint32_t {
    Unknown,     ///< not looked at, or it failed in another way than by its silence
    Present = 4, ///< and formatted
    Absent = 5,  ///< or it cannot be formatted
    Error = 6,
};

/// Looks whether the device answers and is formatted. One that is not formatted is formatted silently.
[[nodiscard]] EepromState probeEeprom(HeadboardEeprom& eeprom);
} // namespace kestra
