#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator {
/// A part of the EEPROM that knows where it lies. Whoever reads asks for the size first.
class EepromBytes {
public:
    EepromBytes(std::span<uint8_t const> bytes, size_t offset) : m_bytes(bytes), m_offset(offset) {}

    [[nodiscard]] size_t size() const { return m_bytes.size(); }
    [[nodiscard]] size_t offset() const { return m_offset; }
    [[nodiscard]] bool holds(size_t from, size_t count) const {
        return from <= size() && count <= size() - from;
    }
    [[nodiscard]] EepromBytes part(size_t from, size_t count) const {
        return {m_bytes.subspan(from, count), m_offset + from};
    }
    [[nodiscard]] EepromBytes from(size_t first) const { return part(first, size() - first); }
    [[nodiscard]] uint8_t byte(size_t i) const { return m_bytes[i]; }
    [[nodiscard]] uint32_t big16(size_t i) const { return uint32_t(byte(i)) << 8 | byte(i + 1); }
    [[nodiscard]] uint32_t big32(size_t i) const { return big16(i) << 16 | big16(i + 2); }

private:
    std::span<uint8_t const> m_bytes;
    size_t m_offset;
};
} // namespace simulator
