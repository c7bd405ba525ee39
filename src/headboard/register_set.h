#pragma once

#include "common/sensor.h"
#include "headboard/headboard_eeprom.h"
#include "headboard/record_format.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kestra {
/// What a register belongs to, by the number that its entry holds. Other address-space kinds of the library
/// are stored as they are.
enum RegisterClass : uint32_t {
    kSensorRegister = 0,
    kFirmwareVariable = 1,
    kSpecialFunction = 2, ///< or memory
};

/// A register with its value, as a register set in the EEPROM holds it.
struct RegisterEntry {
    uint32_t registerClass = kSensorRegister; ///< a `RegisterClass`, or another number
    uint32_t id{};                            ///< page or driver
    uint32_t address{};
    uint32_t size{}; ///< of the register's data in bytes; 0: not known
    uint32_t mask{}; ///< 0: the whole register
    uint32_t value{};

    friend bool operator==(RegisterEntry const&, RegisterEntry const&) = default;
};

/// How an entry is coded. Short kinds hold no mask, 16 bits of value and the low bits of id and address.
enum class EntryKind : uint8_t {
    Full = 2,          ///< 18 bytes: everything
    ShortRegister = 3, ///< 4 bytes: a sensor register
    ShortVariable = 4, ///< 4 bytes: a firmware variable, 5 bits of its id and 10 of its address
};

/// Whether a byte is the code of a kind.
[[nodiscard]] bool isEntryKind(uint8_t code);

/// Bytes that an entry of a kind takes.
[[nodiscard]] size_t entrySize(EntryKind kind);

/// The entry that `entrySize(kind)` bytes hold; `sensor` is what the library says of the open sensor.
[[nodiscard]] RegisterEntry decodeEntry(std::span<uint8_t const> bytes, EntryKind kind,
                                        std::optional<SensorInfo> const& sensor);

/// Bytes before a block's entries: their kind and their length.
inline constexpr size_t kBlockHead = 3;

/// Entries of one kind in a register set.
struct EntryBlock {
    size_t offset{}; ///< of its head, from the record's begin
    EntryKind kind = EntryKind::Full;
    size_t length{};                  ///< bytes of the entries, as its head tells
    std::span<uint8_t const> entries; ///< shorter when the record ends before
};

/// What stands behind the name in a register set.
struct RegisterSetContent {
    std::vector<EntryBlock> blocks;
    size_t restOffset{};           ///< from the record's begin
    std::span<uint8_t const> rest; ///< behind the blocks; empty too where unused bytes end them
};

/// Takes apart a register set, of any content, from its head on, as far as its length and its bytes reach.
[[nodiscard]] RegisterSetContent splitRegisterSet(std::span<uint8_t const> bytes);

// What stands behind the name in a register set: entries in blocks of one kind each, or lines of text.
// Entries are coded as the open sensor needs it; without a camera the plainest way is taken.

/// Adds an entry; one without a size gets that of its register in the sensor's map. `kEepromNoRoom` when the
/// record's capacity is used up, `kEepromFailed` when the record holds something else than entries.
[[nodiscard]] EepromStatus EepromAddEntry(HeadboardEeprom& eeprom, EepromRecord& record, RegisterEntry entry);

/// Adds a register, or one of its bitfields, by name with a value. `kEepromFailed` when the sensor lacks it.
/// An empty bitfield name means the whole register.
[[nodiscard]] EepromStatus EepromAddRegister(HeadboardEeprom& eeprom, EepromRecord& record, char const* reg,
                                             char const* bitfield, uint32_t value);

/// The same with the value that the sensor holds now.
[[nodiscard]] EepromStatus EepromAddRegisterCurrent(HeadboardEeprom& eeprom, EepromRecord& record,
                                                    char const* reg, char const* bitfield);

/// Adds a line of text with its NUL; `kEepromNoRoom` when it does not fit.
[[nodiscard]] EepromStatus EepromAddLine(EepromRecord& record, std::string const& text);

/// The n-th entry of a record's bytes, header included; they may come from anywhere. `kEepromFailed` when
/// there are fewer.
[[nodiscard]] EepromStatus EepromGetEntry(HeadboardEeprom& eeprom, std::span<uint8_t const> record, int32_t n,
                                          RegisterEntry& entry);

/// The length of the n-th line of a record's bytes, and in `line`, when given, its text; `kEepromFailed` when
/// there are fewer lines.
[[nodiscard]] int32_t EepromGetLine(std::span<uint8_t const> record, int32_t n, std::string* line = nullptr);
} // namespace kestra
