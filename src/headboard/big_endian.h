#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

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
