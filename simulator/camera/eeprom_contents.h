#pragma once

#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace simulator {
inline constexpr size_t kEepromSize = 8192; ///< bytes

using EepromContents = std::array<uint8_t, kEepromSize>;

/// As it leaves the maker of the chip: every byte 0xFF.
[[nodiscard]] EepromContents blankContents();
/// With a header and an empty chain of records.
[[nodiscard]] EepromContents formattedContents();

/// Reads a file of exactly the device's size; empty with a message for the user in `error` otherwise.
[[nodiscard]] std::optional<EepromContents> readContents(QString const& file, QString* error);
/// Writes all or nothing: on failure an older file stays as it was, and `error` tells why.
[[nodiscard]] bool writeContents(EepromContents const& contents, QString const& file, QString* error);
} // namespace simulator
