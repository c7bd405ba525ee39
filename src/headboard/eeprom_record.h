#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// One record on its way to or from the EEPROM: a type byte, the payload's length and the payload. It owns
/// its bytes and grows as needed: the capacity decides what is accepted, never where bytes can be written.
class EepromRecord {
public:
    /// `capacity` bounds what `EepromAddEntry` and `EepromAddLine` accept; the payload begins with
    /// `initialLength` bytes (0 to 65535) of 0xFF.
    EepromRecord(uint8_t type, int32_t capacity, int32_t initialLength);

    [[nodiscard]] uint8_t type() const { return m_bytes[0]; }
    [[nodiscard]] int32_t capacity() const { return m_capacity; }
    /// The payload's length in bytes.
    [[nodiscard]] int32_t length() const;
    /// Header and payload.
    [[nodiscard]] std::span<uint8_t const> bytes() const;
    [[nodiscard]] std::span<uint8_t const> payload() const { return bytes().subspan(3); }
    [[nodiscard]] std::span<uint8_t> payload();

    /// The payload grows by these bytes; false, and no change, when it would exceed what a length can tell.
    [[nodiscard]] bool append(std::span<uint8_t const> bytes);

    /// Stores a name, cut to 8 characters, in the first 9 bytes of the payload when it has them; null means
    /// "DEFAULT".
    void setName(char const* name);
    /// The name as stored; empty for types without.
    [[nodiscard]] std::string_view name() const;

private:
    std::vector<uint8_t> m_bytes;
    int32_t m_capacity;
};

/// The name that a payload of a type begins with, up to its NUL or the end of its field.
[[nodiscard]] std::string_view recordName(uint8_t type, std::span<uint8_t const> payload);

/// A record with an unset payload of `initialLength` bytes.
[[nodiscard]] EepromRecord EepromNewRecord(uint8_t type, int32_t capacity, int32_t initialLength);

/// A register set under a name (null: "DEFAULT"), as yet without entries.
[[nodiscard]] EepromRecord makeRegisterSet(uint8_t type, int32_t capacity, char const* name);
