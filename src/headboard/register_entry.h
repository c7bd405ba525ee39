#pragma once

#include "common/sensor.h"

#include <optional>
#include <span>
#include <vector>

/// A register with its value, as a register set in the EEPROM holds it.
struct RegisterEntry {
    uint32_t registerClass = 0; ///< 0 sensor register, 1 firmware variable, 2 special function or memory
    uint32_t id = 0;            ///< page or driver
    uint32_t address = 0;
    uint32_t size = 0; ///< of the register's data in bytes; 0: not known
    uint32_t mask = 0; ///< 0: the whole register
    uint32_t value = 0;

    friend bool operator==(RegisterEntry const&, RegisterEntry const&) = default;
};

/// How an entry is coded. The short kinds hold no mask, 16 bits of value and only the low bits of id and
/// address.
enum class EntryKind : uint8_t {
    Full = 2,          ///< 18 bytes: everything
    ShortRegister = 3, ///< 4 bytes: a sensor register
    ShortVariable = 4, ///< 4 bytes: a firmware variable, 5 bits of its id and 10 of its address
};

/// The kind of a coded byte; empty for any other value.
[[nodiscard]] std::optional<EntryKind> entryKind(uint8_t code);

/// Bytes that an entry of a kind takes.
[[nodiscard]] size_t entrySize(EntryKind kind);

/// The kind that an entry is written in: a short one when class, size and mask allow it. Id, address and
/// value are not looked at, so a short kind may cut them. `sensor` is what the library says of the open
/// sensor.
[[nodiscard]] EntryKind chooseEntryKind(RegisterEntry const& entry, std::optional<SensorInfo> const& sensor);

/// `entrySize(kind)` bytes; what the kind has no room for is cut off.
[[nodiscard]] std::vector<uint8_t> encodeEntry(RegisterEntry const& entry, EntryKind kind,
                                               std::optional<SensorInfo> const& sensor);

/// The reverse, of `entrySize(kind)` bytes.
[[nodiscard]] RegisterEntry decodeEntry(std::span<uint8_t const> bytes, EntryKind kind,
                                        std::optional<SensorInfo> const& sensor);
