#include "simulator/camera/start_up_record.h"

#include <QByteArray>
#include <algorithm>
#include <iterator>

namespace simulator {
namespace {
constexpr char kMagic[] = {'V', 'Y', 'E', 'E'};
constexpr size_t kFirstRecord = 5;
constexpr size_t kRecordHeader = 3; // type, length
constexpr size_t kBlockHeader = 3;  // kind, length
constexpr size_t kNameSize = 9;
constexpr uint8_t kShadingRecord = 8;
constexpr uint8_t kEnd = 0xFF; // of the chain, and of the blocks

enum EntryKind : uint8_t { kFullEntry = 2, kShortRegister = 3, kShortVariable = 4 };
constexpr size_t kFullEntrySize = 18;
constexpr size_t kShortEntrySize = 4;

constexpr uint32_t kLargestValue = 4; // bytes
constexpr uint32_t kWholeRegister = 0xFFFFFFFF;

// Registers with fewer address bits share the address word with their page.
constexpr uint32_t kLeastBitsOfAWholeAddress = 9;

QString at(EepromBytes const& place, char const* what) {
    return QStringLiteral("EEPROM, offset %1: %2").arg(place.offset()).arg(QLatin1String(what));
}

bool isNamed(EepromBytes const& payload, QString const& name) {
    QByteArray stored;
    for (size_t i = 0; i < kNameSize && payload.byte(i) != 0; ++i)
        stored.append(char(payload.byte(i)));
    return QString::fromLocal8Bit(stored).compare(name, Qt::CaseInsensitive) == 0;
}

// The payload of the record looked for.
std::optional<EepromBytes> findRecord(EepromContents const& contents, QString const& name, QString* error) {
    if (!std::equal(std::begin(kMagic), std::end(kMagic), contents.begin())) {
        *error = QStringLiteral("the EEPROM is not formatted");
        return std::nullopt;
    }
    EepromBytes rest = EepromBytes(contents, 0).from(kFirstRecord);
    while (rest.size() > 0 && rest.byte(0) != kEnd) {
        if (!rest.holds(0, kRecordHeader) || !rest.holds(kRecordHeader, rest.big16(1))) {
            *error = at(rest, "the record runs over the end");
            return std::nullopt;
        }
        EepromBytes const payload = rest.part(kRecordHeader, rest.big16(1));
        if (rest.byte(0) == kShadingRecord) {
            if (payload.size() < kNameSize) {
                *error = at(rest, "the record is too short for its name");
                return std::nullopt;
            }
            if (name.isNull() || isNamed(payload, name))
                return payload;
        }
        rest = rest.from(kRecordHeader + payload.size());
    }
    *error = name.isNull() ? QStringLiteral("the EEPROM holds no shading registers")
                           : QStringLiteral("the EEPROM holds no shading registers named \"%1\"").arg(name);
    return std::nullopt;
}

StoredEntry fullEntry(EepromBytes const& entry) {
    return {.offset = entry.offset(),
            .addressSpace = entry.byte(0),
            .id = entry.big32(1),
            .address = entry.big32(5),
            .size = entry.byte(9),
            .mask = entry.big32(10),
            .value = entry.big32(14)};
}

StoredEntry shortRegister(EepromBytes const& entry, bool isPaged) {
    uint32_t const word = entry.big16(0);
    return {.offset = entry.offset(),
            .addressSpace = 0,
            .id = isPaged ? word >> 8 : 0,
            .address = isPaged ? word & 0xFF : word,
            .value = entry.big16(2)};
}

StoredEntry shortVariable(EepromBytes const& entry) {
    uint32_t const word = entry.big16(0);
    return {.offset = entry.offset(),
            .addressSpace = 1,
            .id = word >> 10 & 0x1F,
            .address = word & 0x3FF,
            .size = (word & 0x8000) != 0 ? 1U : 2U,
            .value = entry.big16(2)};
}

uint32_t valueOf(StoredEntry const& entry) {
    return entry.size == 0 || entry.size >= kLargestValue ? entry.value
                                                          : entry.value & ((1U << 8 * entry.size) - 1);
}

bool appendBlock(uint8_t kind, EepromBytes const& entries, bool isPaged, std::vector<StoredEntry>& decoded,
                 QString* error) {
    if (kind != kFullEntry && kind != kShortRegister && kind != kShortVariable) {
        *error = at(entries, "the block before is of no known kind");
        return false;
    }
    size_t const size = kind == kFullEntry ? kFullEntrySize : kShortEntrySize;
    if (entries.size() % size != 0) {
        *error = at(entries, "the block's length leaves a broken entry");
        return false;
    }
    for (size_t i = 0; i < entries.size(); i += size) {
        EepromBytes const entry = entries.part(i, size);
        decoded.push_back(kind == kFullEntry       ? fullEntry(entry)
                          : kind == kShortRegister ? shortRegister(entry, isPaged)
                                                   : shortVariable(entry));
    }
    return true;
}
} // namespace

bool readEntries(EepromBytes const& payload, uint32_t registerAddressWidth, std::vector<StoredEntry>& decoded,
                 QString* error) {
    bool const isPaged = registerAddressWidth < kLeastBitsOfAWholeAddress;
    if (payload.size() < kNameSize) {
        *error = at(payload, "the record is too short for its name");
        return false;
    }
    EepromBytes rest = payload.from(kNameSize);
    while (rest.size() > 0 && rest.byte(0) != kEnd) {
        if (!rest.holds(0, kBlockHeader) || !rest.holds(kBlockHeader, rest.big16(1))) {
            *error = at(rest, "the block runs over the end of its record");
            return false;
        }
        EepromBytes const entries = rest.part(kBlockHeader, rest.big16(1));
        if (!appendBlock(rest.byte(0), entries, isPaged, decoded, error))
            return false;
        rest = rest.from(kBlockHeader + entries.size());
    }
    return true;
}

std::optional<std::vector<StoredEntry>> readStartUpRecord(EepromContents const& contents, QString const& name,
                                                          uint32_t registerAddressWidth, QString* error) {
    std::vector<StoredEntry> entries;
    std::optional<EepromBytes> const payload = findRecord(contents, name, error);
    if (payload && readEntries(*payload, registerAddressWidth, entries, error))
        return entries;
    return std::nullopt;
}

bool replayEntries(std::vector<StoredEntry> const& entries, RegisterMap& registers, QString* error) {
    std::vector<RegisterMap::Register*> found;
    found.reserve(entries.size());
    for (StoredEntry const& entry : entries) {
        found.push_back(registers.find(entry.addressSpace, entry.id, entry.address));
        if (found.back() && entry.size <= kLargestValue)
            continue;
        *error = QStringLiteral("EEPROM, offset %1: there is no register of %2 bytes at class %3, id %4, "
                                "address 0x%5")
                     .arg(entry.offset)
                     .arg(entry.size)
                     .arg(entry.addressSpace)
                     .arg(entry.id)
                     .arg(entry.address, 4, 16, QLatin1Char('0'));
        return false;
    }
    for (size_t i = 0; i < entries.size(); ++i)
        registers.write(*found[i], valueOf(entries[i]),
                        entries[i].mask == 0 ? kWholeRegister : entries[i].mask);
    return true;
}
} // namespace simulator
