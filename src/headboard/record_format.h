#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kestra {
inline constexpr uint8_t kErased = 0xFF;      ///< a byte that was never written, also in a record
inline constexpr int32_t kRecordHead = 3;     ///< bytes before a record's payload: type and length
inline constexpr int32_t kRecordName = 9;     ///< bytes of the name that a register set begins with
inline constexpr int32_t kNamedDataName = 15; ///< the same of named data
inline constexpr int32_t kReservedBytes = 64; ///< bytes of the device that registers leave free

/// Numbers as the EEPROM holds them, most significant byte first. The caller has checked the range.
[[nodiscard]] inline uint32_t getU16Be(std::span<uint8_t const> bytes, size_t offset) {
    return uint32_t(bytes[offset]) << 8 | bytes[offset + 1];
}

[[nodiscard]] inline uint32_t getU32Be(std::span<uint8_t const> bytes, size_t offset) {
    return getU16Be(bytes, offset) << 16 | getU16Be(bytes, offset + 2);
}

/// Higher bits of the value are dropped.
inline void putU16Be(std::span<uint8_t> bytes, size_t offset, uint32_t value) {
    bytes[offset] = uint8_t(value >> 8);
    bytes[offset + 1] = uint8_t(value);
}

inline void putU32Be(std::span<uint8_t> bytes, size_t offset, uint32_t value) {
    putU16Be(bytes, offset, value >> 16);
    putU16Be(bytes, offset + 2, value);
}

/// Whether two ASCII texts are equal when upper and lower case count as the same, whatever the locale.
[[nodiscard]] inline bool equalWithoutCase(std::string_view a, std::string_view b) {
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

/// Record types of the EEPROM by their numbers. 6 is unused.
enum EepromRecordType : uint8_t {
    kRecordIdent = 1, ///< the identification header itself, at offset 0
    kRecordSensorData = 2,
    kRecordRegisterData = 3,
    kRecordVariableData = 4,
    kRecordSfrData = 5,
    kRecordCustomerData = 7,
    kRecordPga = 8,
    kRecordSwPga = 9,
    kRecordSensorId = 10,
    kRecordHeadboardId = 11,
    kRecordCcm = 12,
    kRecordSwCcm = 13,
    kRecordDefectMap = 14,
    kRecordLensType = 15,
    kRecordTimeStamp = 16,
    kRecordScratchpad = 17,
    kRecordSwStereo = 18,
    kRecordEnd = 255, ///< ends the chain; no length follows
};

/// What this system knows of a type's payload.
enum class RecordPayload : uint8_t {
    Opaque,      ///< kept byte for byte
    Text,        ///< up to a NUL
    RegisterSet, ///< 9 bytes of name, then register entries or lines of text
    NamedData,   ///< 15 bytes of name, then opaque bytes
};

/// The payload of a type; `Opaque` for unknown ones.
[[nodiscard]] RecordPayload recordPayload(uint32_t type);

/// Width in bytes of the name that the payload begins with; 0 for types without.
[[nodiscard]] size_t recordNameWidth(uint32_t type);

/// The name under which a type is shown; null for an unknown type.
[[nodiscard]] char const* recordTypeName(uint32_t type);

/// The type of that name, compared without case; 0 for an unknown name.
[[nodiscard]] uint8_t recordTypeNamed(char const* name);

/// The name that a payload of a type begins with, or its text: up to a NUL or the end of the field. Empty for
/// opaque types.
[[nodiscard]] std::string_view recordText(uint8_t type, std::span<uint8_t const> payload);

/// One record on its way to or from the EEPROM: type, length and payload. It grows as needed: the capacity
/// decides what is accepted, never where bytes can be written.
class EepromRecord {
public:
    /// `capacity` bounds what `EepromAddEntry` and `EepromAddLine` accept; the payload begins with
    /// `initialLength` bytes (0 to 65535) of 0xFF.
    EepromRecord(uint8_t type, int32_t capacity, int32_t initialLength);

    [[nodiscard]] uint8_t type() const { return m_bytes[0]; }
    [[nodiscard]] int32_t capacity() const { return m_capacity; }
    /// The payload's length in bytes.
    [[nodiscard]] int32_t length() const { return int32_t(m_bytes.size() - kRecordHead); }
    /// Header and payload.
    [[nodiscard]] std::span<uint8_t const> bytes() const { return m_bytes; }
    [[nodiscard]] std::span<uint8_t const> payload() const { return bytes().subspan(kRecordHead); }
    [[nodiscard]] std::span<uint8_t> payload() { return std::span(m_bytes).subspan(kRecordHead); }

    /// The payload grows by these bytes; false, and no change, when it would exceed what a length can tell.
    [[nodiscard]] bool append(std::span<uint8_t const> bytes);

    /// Stores a name, cut to 8 characters, in the first 9 bytes of the payload when it has them; null means
    /// "DEFAULT".
    void setName(char const* name);
    /// The name or text as stored.
    [[nodiscard]] std::string_view name() const { return recordText(type(), payload()); }

private:
    std::vector<uint8_t> m_bytes;
    int32_t m_capacity;
};

/// A record with an unset payload of `initialLength` bytes.
[[nodiscard]] inline EepromRecord EepromNewRecord(uint8_t type, int32_t capacity, int32_t initialLength) {
    return {type, capacity, initialLength};
}

/// A register set under a name (null: "DEFAULT"), as yet without entries, of at most `capacity` bytes.
[[nodiscard]] EepromRecord makeRegisterSet(uint8_t type, int32_t capacity, char const* name);
} // namespace kestra
