#include "simulator/camera/stored_records.h"

#include <QByteArray>
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <tuple>

namespace simulator {
namespace {
constexpr uint8_t kMagic[] = {'V', 'Y', 'E', 'E'};
constexpr size_t kFirstRecord = 5;
constexpr size_t kLastBytes = 16; // at the end: single bytes that say what the headboard is
constexpr size_t kHeader = 3;     // type and length, of records and of their blocks
constexpr size_t kNameSize = 9;
constexpr uint8_t kShadingRecord = 8;
constexpr uint8_t kEnd = 0xFF; // of the chain, and of the blocks

enum EntryKind : uint8_t { kFullEntry = 2, kShortRegister = 3, kShortVariable = 4 };

constexpr uint32_t kLargestValue = 4; // bytes

// Registers with fewer address bits share the address word with their page.
constexpr uint32_t kLeastBitsOfAWholeAddress = 9;

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

/// A record of the chain, or a block of a record.
struct Item {
    EepromBytes whole;
    bool fits = false; ///< its length does not run over the end; only then there is a payload

    [[nodiscard]] uint8_t type() const { return whole.byte(0); }
    [[nodiscard]] EepromBytes payload() const { return whole.from(kHeader); }
};

// Takes the next item off; none at the end of the run. One that runs over the end is all the rest.
std::optional<Item> takeItem(EepromBytes& rest) {
    if (rest.size() == 0 || rest.byte(0) == kEnd)
        return std::nullopt;
    bool const fits = rest.holds(0, kHeader) && rest.holds(kHeader, rest.big16(1));
    size_t const size = fits ? kHeader + rest.big16(1) : rest.size();
    Item const item{rest.part(0, size), fits};
    rest = rest.from(size);
    return item;
}

bool isFormatted(EepromContents const& contents) {
    return std::equal(std::begin(kMagic), std::end(kMagic), contents.begin());
}

QString at(EepromBytes const& place, char const* what) {
    return QStringLiteral("EEPROM, offset %1: %2").arg(place.offset()).arg(QLatin1String(what));
}

constexpr size_t kAll = SIZE_MAX;

struct TypeRow {
    uint8_t type;
    char const* name;
    size_t textSize = 0; ///< bytes at the payload's beginning that a name or text may fill
    bool holdsRegisters = false;
};

constexpr TypeRow kTypes[] = {
    {2, "SENSOR_DATA"},         {3, "REG_DATA"},          {4, "VAR_DATA"},        {5, "SFR_DATA"},
    {7, "CUSTOMER_DATA"},       {8, "PGA", 9, true},      {9, "SWPGA", 9},        {10, "Sensor ID", kAll},
    {11, "Headboard ID", kAll}, {12, "CCM", 9, true},     {13, "SWCCM", 9},       {14, "Defect Map"},
    {15, "Lens Type", kAll},    {16, "Time Stamp", kAll}, {17, "Scratchpad", 15}, {18, "SWSTEREO", 9},
};

TypeRow rowOf(uint8_t type) {
    auto const found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                    [&](TypeRow const& row) { return row.type == type; });
    return found == std::end(kTypes) ? TypeRow{type, ""} : *found;
}

// What fills all of its room has no closing zero.
QString textIn(EepromBytes const& payload, size_t room) {
    QByteArray text;
    for (size_t i = 0; i < std::min(room, payload.size()) && payload.byte(i) != 0; ++i)
        text.append(char(payload.byte(i)));
    return QString::fromLocal8Bit(text);
}

/// One register setting of a stored record.
struct StoredEntry {
    size_t offset = 0;         ///< of the entry in the EEPROM
    uint32_t addressSpace = 0; ///< address-space kind
    uint32_t id = 0;           ///< page or driver
    uint32_t address = 0;
    uint32_t size = 0; ///< bytes of the value; 0: as wide as the register
    uint32_t mask = 0; ///< bits that the value belongs to, its lowest bit at their lowest; 0: whole register
    uint32_t value = 0;
};

std::optional<size_t> entrySize(uint8_t kind) {
    if (kind != kFullEntry && kind != kShortRegister && kind != kShortVariable)
        return std::nullopt;
    return kind == kFullEntry ? 18 : 4;
}

StoredEntry decoded(uint8_t kind, EepromBytes const& entry, bool isPaged) {
    if (kind == kFullEntry)
        return {entry.offset(), entry.byte(0),   entry.big32(1), entry.big32(5),
                entry.byte(9),  entry.big32(10), entry.big32(14)};
    uint32_t const word = entry.big16(0);
    uint32_t const value = entry.big16(2);
    if (kind == kShortVariable)
        return {entry.offset(), 1, word >> 10 & 0x1F, word & 0x3FF, (word & 0x8000) != 0 ? 1U : 2U, 0, value};
    return {entry.offset(), 0, isPaged ? word >> 8 : 0, isPaged ? word & 0xFF : word, 0, 0, value};
}

uint32_t valueOf(StoredEntry const& entry) {
    return entry.size == 0 || entry.size >= kLargestValue ? entry.value
                                                          : entry.value & ((1U << 8 * entry.size) - 1);
}

// The entries behind the name of a register record, appended as far as they are well-formed. False with a
// message that names the place when they are not to the end.
bool readEntries(EepromBytes const& payload, uint32_t registerAddressWidth, std::vector<StoredEntry>& entries,
                 QString* error) {
    bool const isPaged = registerAddressWidth < kLeastBitsOfAWholeAddress;
    if (payload.size() < kNameSize) {
        *error = at(payload, "the record is too short for its name");
        return false;
    }
    EepromBytes rest = payload.from(kNameSize);
    while (std::optional<Item> const block = takeItem(rest)) {
        std::optional<size_t> const size = entrySize(block->type());
        if (!block->fits)
            *error = at(block->whole, "the block runs over the end of its record");
        else if (!size)
            *error = at(block->payload(), "the block before is of no known kind");
        else if (block->payload().size() % *size != 0)
            *error = at(block->payload(), "the block's length leaves a broken entry");
        else {
            for (size_t i = 0; i < block->payload().size(); i += *size)
                entries.push_back(decoded(block->type(), block->payload().part(i, *size), isPaged));
            continue;
        }
        return false;
    }
    return true;
}

// The payload of the record of shading registers looked for.
std::optional<EepromBytes> findRecord(EepromContents const& contents, QString const& name, QString* error) {
    if (!isFormatted(contents)) {
        *error = QStringLiteral("the EEPROM is not formatted");
        return std::nullopt;
    }
    EepromBytes rest = EepromBytes(contents, 0).from(kFirstRecord);
    while (std::optional<Item> const record = takeItem(rest)) {
        bool const isShading = record->type() == kShadingRecord;
        if (!record->fits || (isShading && record->payload().size() < kNameSize)) {
            *error = at(record->whole, record->fits ? "the record is too short for its name"
                                                    : "the record runs over the end");
            return std::nullopt;
        }
        if (isShading &&
            (name.isNull() || textIn(record->payload(), kNameSize).compare(name, Qt::CaseInsensitive) == 0))
            return record->payload();
    }
    *error = QStringLiteral("the EEPROM holds no shading registers");
    if (!name.isNull())
        *error += QStringLiteral(" named \"%1\"").arg(name);
    return std::nullopt;
}

StoredRecord told(Item const& item, uint32_t registerAddressWidth, RegisterMap& registers) {
    TypeRow const row = rowOf(item.type());
    StoredRecord record{.offset = item.whole.offset(),
                        .size = item.whole.size(),
                        .type = row.type,
                        .typeName = QString::fromLatin1(row.name),
                        .text = item.fits ? textIn(item.payload(), row.textSize) : QString(),
                        .settings = {},
                        .fault = item.fits ? QString() : QStringLiteral("runs over the end")};
    std::vector<StoredEntry> entries;
    // What is sound before a fault is shown all the same.
    if (row.holdsRegisters && item.fits)
        std::ignore = readEntries(item.payload(), registerAddressWidth, entries, &record.fault);
    for (StoredEntry const& entry : entries) {
        auto const* const reg = registers.find(entry.addressSpace, entry.id, entry.address);
        record.settings.push_back({.offset = entry.offset,
                                   .name = reg ? reg->name : QByteArray(),
                                   .place = QStringLiteral("%1/%2/0x%3")
                                                .arg(entry.addressSpace)
                                                .arg(entry.id)
                                                .arg(entry.address, 4, 16, QLatin1Char('0')),
                                   .value = entry.value,
                                   .mask = entry.mask});
    }
    return record;
}
} // namespace

std::vector<StoredRecord> storedRecords(EepromContents const& contents, uint32_t registerAddressWidth,
                                        RegisterMap& registers) {
    std::vector<StoredRecord> records;
    if (!isFormatted(contents))
        return records;
    EepromBytes rest =
        EepromBytes(contents, 0).part(kFirstRecord, contents.size() - kLastBytes - kFirstRecord);
    while (std::optional<Item> const item = takeItem(rest))
        records.push_back(told(*item, registerAddressWidth, registers));
    return records;
}

bool replayRecord(EepromContents const& contents, QString const& name, uint32_t registerAddressWidth,
                  RegisterMap& registers, QString* error) {
    std::vector<StoredEntry> entries;
    std::optional<EepromBytes> const payload = findRecord(contents, name, error);
    if (!payload || !readEntries(*payload, registerAddressWidth, entries, error))
        return false;
    for (StoredEntry const& entry : entries)
        if (!registers.find(entry.addressSpace, entry.id, entry.address) || entry.size > kLargestValue) {
            *error = QStringLiteral("EEPROM, offset %1: there is no register of %2 bytes at class %3, id %4, "
                                    "address 0x%5")
                         .arg(entry.offset)
                         .arg(entry.size)
                         .arg(entry.addressSpace)
                         .arg(entry.id)
                         .arg(entry.address, 4, 16, QLatin1Char('0'));
            return false;
        }
    for (StoredEntry const& entry : entries)
        registers.write(*registers.find(entry.addressSpace, entry.id, entry.address), valueOf(entry),
                        entry.mask == 0 ? UINT32_MAX : entry.mask);
    return true;
}
} // namespace simulator
