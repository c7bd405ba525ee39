#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace headboard_image {
/// "0x" and at least so many hexadecimal digits.
[[nodiscard]] std::string hexadecimal(uint32_t value, size_t digits);

/// Offsets as every command prints them.
[[nodiscard]] std::string offsetText(int32_t offset);

/// In quotation marks; everything that is not printable ASCII is escaped, so that no content of a device
/// reaches the terminal.
[[nodiscard]] std::string quoted(std::string_view text);

/// The name of a record type, or "type 77" for an unknown one.
[[nodiscard]] std::string typeText(uint8_t type);

/// The text filled up to a width with blanks behind it.
[[nodiscard]] std::string column(std::string text, size_t width);

/// Rows of 16 bytes behind the offset of their first, in hexadecimal and as text.
[[nodiscard]] std::string hexDump(std::span<uint8_t const> bytes, int32_t offset);

/// "1 record", "2 records".
[[nodiscard]] std::string counted(int64_t count, char const* what);
} // namespace headboard_image
