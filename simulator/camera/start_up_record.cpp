#include "simulator/camera/start_up_record.h"

#include <QByteArray>
#include <algorithm>
#include <iterator>
#include <span>

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

/// A part of the EEPROM that knows where it lies. Whoever reads asks for the size first.
class Bytes {
public:
    Bytes(std::span<uint8_t const> bytes, size_t offset) : m_bytes(bytes), m_offset(offset) {}

    [[nodiscard]] size_t size() const { return m_bytes.size(); }
    [[nodiscard]] size_t offset() const { return m_offset; }
    [[nodiscard]] bool holds(size_t from, size_t count) const {
        return from <= size() && count <= size() - from;
    }
    [[nodiscard]] Bytes part(size_t from, size_t count) const {
        return {m_bytes.subspan(from, count), m_offset + from};
    }
    [[nodiscard]] Bytes from(size_t first) const { return part(first, size() - first); }
    [[nodiscard]] uint8_t byte(size_t i) const { return m_bytes[i]; }
    [[nodiscard]] uint32_t big16(size_t i) const { return uint32_t(byte(i)) << 8 | byte(i + 1); }
    [[nodiscard]] uint32_t big32(size_t i) const { return big16(i) << 16 | big16(i + 2); }

private:
    std::span<uint8_t const> m_bytes;
    size_t m_offset;
};

QString at(Bytes const& place, char const* what) {
    return QStringLiteral("EEPROM, offset %1: %2").arg(place.offset()).arg(QLatin1String(what));
}

bool isNamed(Bytes const& payload, QString const& name) {
    QByteArray stored;
    for (size_t i = 0; i < kNameSize && payload.byte(i) != 0; ++i)
        stored.append(char(payload.byte(i)));
    return QString::fromLocal8Bit(stored).compare(name, Qt::CaseInsensitive) == 0;
}

// The payload of the record looked for.
std::optional<Bytes> findRecord(EepromContents const& contents, QString const& name, QString& fault) {
    if (!std::equal(std::begin(kMagic), std::end(kMagic), contents.begin())) {
        fault = QStringLiteral("the EEPROM is not formatted");
        return std::nullopt;
    }
    Bytes rest = Bytes(contents, 0).from(kFirstRecord);
    while (rest.size() > 0 && rest.byte(0) != kEnd) {
        if (!rest.holds(0, kRecordHeader) || !rest.holds(kRecordHeader, rest.big16(1))) {
            fault = at(rest, "the record runs over the end");
            return std::nullopt;
        }
        Bytes const payload = rest.part(kRecordHeader, rest.big16(1));
        if (rest.byte(0) == kShadingRecord) {
            if (payload.size() < kNameSize) {
                fault = at(rest, "the record is too short for its name");
                return std::nullopt;
            }
            if (name.isNull() || isNamed(payload, name))
                return payload;
        }
        rest = rest.from(kRecordHeader + payload.size());
    }
    fault = name.isNull() ? QStringLiteral("the EEPROM holds no shading registers")
                          : QStringLiteral("the EEPROM holds no shading registers named \"%1\"").arg(name);
    return std::nullopt;
}

StoredEntry fullEntry(Bytes const& entry) {
    return {.offset = entry.offset(),
            .addressSpace = entry.byte(0),
            .id = entry.big32(1),
            .address = entry.big32(5),
            .size = entry.byte(9),
            .mask = entry.big32(10),
            .value = entry.big32(14)};
}

StoredEntry shortRegister(Bytes const& entry, bool isPaged) {
    uint32_t const word = entry.big16(0);
    return {.offset = entry.offset(),
            .addressSpace = 0,
            .id = isPaged ? word >> 8 : 0,
            .address = isPaged ? word & 0xFF : word,
            .value = entry.big16(2)};
}

StoredEntry shortVariable(Bytes const& entry) {
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

bool appendBlock(uint8_t kind, Bytes const& entries, bool isPaged, std::vector<StoredEntry>& decoded,
                 QString& fault) {
    if (kind != kFullEntry && kind != kShortRegister && kind != kShortVariable) {
        fault = at(entries, "the block before is of no known kind");
        return false;
    }
    size_t const size = kind == kFullEntry ? kFullEntrySize : kShortEntrySize;
    if (entries.size() % size != 0) {
        fault = at(entries, "the block's length leaves a broken entry");
        return false;
    }
    for (size_t i = 0; i < entries.size(); i += size) {
        Bytes const entry = entries.part(i, size);
        decoded.push_back(kind == kFullEntry       ? fullEntry(entry)
                          : kind == kShortRegister ? shortRegister(entry, isPaged)
                                                   : shortVariable(entry));
    }
    return true;
}

bool decode(Bytes const& payload, bool isPaged, std::vector<StoredEntry>& decoded, QString& fault) {
    Bytes rest = payload.from(kNameSize);
    while (rest.size() > 0 && rest.byte(0) != kEnd) {
        if (!rest.holds(0, kBlockHeader) || !rest.holds(kBlockHeader, rest.big16(1))) {
            fault = at(rest, "the block runs over the end of its record");
            return false;
        }
        Bytes const entries = rest.part(kBlockHeader, rest.big16(1));
        if (!appendBlock(rest.byte(0), entries, isPaged, decoded, fault))
            return false;
        rest = rest.from(kBlockHeader + entries.size());
    }
    return true;
}

} // namespace

std::optional<std::vector<StoredEntry>> readStartUpRecord(EepromContents const& contents, QString const& name,
                                                          uint32_t registerAddressWidth, QString* error) {
    QString fault;
    std::vector<StoredEntry> entries;
    std::optional<Bytes> const payload = findRecord(contents, name, fault);
    if (payload && decode(*payload, registerAddressWidth < kLeastBitsOfAWholeAddress, entries, fault))
        return entries;
    if (error)
        *error = fault;
    return std::nullopt;
}

bool replayEntries(std::vector<StoredEntry> const& entries, RegisterMap& registers, QString* error) {
    std::vector<RegisterMap::Register*> found;
    found.reserve(entries.size());
    for (StoredEntry const& entry : entries) {
        found.push_back(registers.find(entry.addressSpace, entry.id, entry.address));
        if (found.back() && entry.size <= kLargestValue)
            continue;
        if (error)
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
