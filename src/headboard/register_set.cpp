#include "headboard/register_set.h"

#include "headboard/record_format.h"

#include <algorithm>

namespace kestra {
namespace {
constexpr uint32_t kShortRegisterBits = 16;
constexpr uint32_t kUsualVariableSize = 2;

// Registers of these sensors are addressed by a page in the high byte of the address word.
bool hasPagedAddress(std::optional<SensorInfo> const& sensor) {
    constexpr uint32_t kNineBits = 9;
    return sensor && sensor->registerAddressWidth < kNineBits;
}

// The kind that an entry is written in: a short one when class, size and mask allow it. Id, address and value
// are not looked at, so a short kind may cut them.
EntryKind chooseEntryKind(RegisterEntry const& entry, std::optional<SensorInfo> const& sensor) {
    if (entry.mask != 0)
        return EntryKind::Full;
    if (entry.registerClass == kFirmwareVariable && entry.size <= kUsualVariableSize)
        return EntryKind::ShortVariable;
    bool const hasUsualSize =
        entry.size == 0 || !sensor || uint64_t{entry.size} * sensor->registerDataWidth == kShortRegisterBits;
    return entry.registerClass == kSensorRegister && hasUsualSize ? EntryKind::ShortRegister
                                                                  : EntryKind::Full;
}

uint32_t addressWord(RegisterEntry const& entry, EntryKind kind, std::optional<SensorInfo> const& sensor) {
    if (kind == EntryKind::ShortVariable)
        return (entry.size & 1) << 15 | (entry.id & 31) << 10 | (entry.address & 0x3FF);
    return hasPagedAddress(sensor) ? (entry.id & 0xFF) << 8 | (entry.address & 0xFF) : entry.address;
}

std::vector<uint8_t> encodeEntry(RegisterEntry const& entry, EntryKind kind,
                                 std::optional<SensorInfo> const& sensor) {
    std::vector<uint8_t> bytes(entrySize(kind));
    if (kind != EntryKind::Full) {
        putU16Be(bytes, 0, addressWord(entry, kind, sensor));
        putU16Be(bytes, 2, entry.value);
        return bytes;
    }
    bytes[0] = uint8_t(entry.registerClass);
    putU32Be(bytes, 1, entry.id);
    putU32Be(bytes, 5, entry.address);
    bytes[9] = uint8_t(entry.size);
    putU32Be(bytes, 10, entry.mask);
    putU32Be(bytes, 14, entry.value);
    return bytes;
}

constexpr int32_t kEntryReserve = 11; // of the capacity; an entry may still end beyond it
constexpr int32_t kLineReserve = 4;

// A record of as many bytes as it says and really has.
std::span<uint8_t const> cutToLength(std::span<uint8_t const> record) {
    size_t const told = record.size() < kRecordHead ? 0 : kRecordHead + size_t{getU16Be(record, 1)};
    return record.first(std::min(record.size(), told));
}

// Where the name ends, in a record that may end before.
size_t contentOffset(std::span<uint8_t const> record) {
    return std::min<size_t>(record.size(), kRecordHead + kRecordName);
}

// Whether nothing but whole blocks follows the name.
bool holdsBlocks(EepromRecord const& record, RegisterSetContent const& content) {
    bool const lastIsWhole =
        content.blocks.empty() || content.blocks.back().entries.size() == content.blocks.back().length;
    return record.length() >= kRecordName && content.restOffset == record.bytes().size() && lastIsWhole;
}

// The entry of a register without mask and value.
RegisterEntry entryFor(Sensor const& sensor, vy_RegisterDescription const& reg) {
    // Address-space kinds whose entries tell id and size, or the id with a condition.
    constexpr uint32_t kPlainKinds[] = {1, 2, 5, 6, 8, 9};
    constexpr uint32_t kSecondaryMapKinds[] = {4, 7};
    std::optional<SensorInfo> const info = sensor.info();
    RegisterEntry entry;
    entry.address = reg.address;
    bool hasId = info && info->hasPageSelect;
    if (std::ranges::count(kPlainKinds, reg.addressSpace) > 0) {
        entry.registerClass = reg.addressSpace;
        entry.size = sensor.dataSize(reg);
        hasId = true;
    } else if (std::ranges::count(kSecondaryMapKinds, reg.addressSpace) > 0) {
        entry.registerClass = reg.addressSpace;
        hasId = info && (info->secondaryMaps >> reg.addressSpace & 1) != 0;
    }
    entry.id = hasId ? reg.id : 0;
    return entry;
}

// The entry of a register or bitfield by name, as yet without a value; empty when the sensor lacks it.
std::optional<RegisterEntry> findEntry(Sensor const& sensor, char const* reg, char const* bitfield) {
    uint32_t mask = 0;
    if (*bitfield != '\0') {
        bool const exists = sensor.existsBitfield(reg, bitfield);
        vy_BitfieldDescription const* const found = exists ? sensor.findBitfield(reg, bitfield) : nullptr;
        if (!found)
            return std::nullopt;
        mask = found->mask;
    } else if (!sensor.existsRegister(reg)) {
        return std::nullopt;
    }
    vy_RegisterDescription const* const description = sensor.findRegister(reg);
    if (!description)
        return std::nullopt;
    RegisterEntry entry = entryFor(sensor, vy_RegisterDescription(*description));
    entry.mask = mask;
    return entry;
}
} // namespace

bool isEntryKind(uint8_t code) {
    return code >= uint8_t(EntryKind::Full) && code <= uint8_t(EntryKind::ShortVariable);
}

size_t entrySize(EntryKind kind) { return kind == EntryKind::Full ? 18 : 4; }

RegisterEntry decodeEntry(std::span<uint8_t const> bytes, EntryKind kind,
                          std::optional<SensorInfo> const& sensor) {
    if (kind == EntryKind::Full)
        return {.registerClass = bytes[0],
                .id = getU32Be(bytes, 1),
                .address = getU32Be(bytes, 5),
                .size = bytes[9],
                .mask = getU32Be(bytes, 10),
                .value = getU32Be(bytes, 14)};
    uint32_t const word = getU16Be(bytes, 0);
    RegisterEntry entry;
    entry.value = getU16Be(bytes, 2);
    if (kind == EntryKind::ShortVariable) {
        entry.registerClass = kFirmwareVariable;
        entry.id = word >> 10 & 31;
        entry.address = word & 0x3FF;
        entry.size = word >> 15 != 0 ? 1 : kUsualVariableSize;
        return entry;
    }
    entry.id = hasPagedAddress(sensor) ? word >> 8 : 0;
    entry.address = hasPagedAddress(sensor) ? word & 0xFF : word;
    uint32_t const unitBits = sensor ? sensor->registerDataWidth : 0;
    entry.size = unitBits != 0 ? kShortRegisterBits / unitBits : 1;
    return entry;
}

RegisterSetContent splitRegisterSet(std::span<uint8_t const> bytes) {
    std::span<uint8_t const> const record = cutToLength(bytes);
    size_t at = contentOffset(record);
    RegisterSetContent content;
    while (record.size() - at >= kBlockHead && isEntryKind(record[at])) {
        size_t const length = getU16Be(record, at + 1);
        size_t const begin = at + kBlockHead;
        size_t const there = std::min(length, record.size() - begin);
        content.blocks.push_back({at, EntryKind(record[at]), length, record.subspan(begin, there)});
        at = begin + there;
    }
    content.restOffset = at;
    if (at < record.size() && record[at] != kErased)
        content.rest = record.subspan(at);
    return content;
}

EepromStatus EepromAddEntry(HeadboardEeprom& eeprom, EepromRecord& record, RegisterEntry entry) {
    if (record.length() >= int64_t{record.capacity()} - kEntryReserve)
        return kEepromNoRoom;
    Sensor const& sensor = eeprom.sensor;
    std::optional<SensorInfo> const info = sensor.info();
    if (entry.size == 0 && info) {
        if (auto const* const reg = sensor.findRegisterAt(entry.address, entry.registerClass, entry.id))
            entry.size = sensor.dataSize(vy_RegisterDescription(*reg));
    }
    if (entry.registerClass == kFirmwareVariable && entry.size == 0)
        entry.size = kUsualVariableSize;

    RegisterSetContent const content = splitRegisterSet(record.bytes());
    if (!holdsBlocks(record, content))
        return kEepromFailed;
    EntryKind const kind = chooseEntryKind(entry, info);
    std::vector<uint8_t> added = encodeEntry(entry, kind, info);
    bool const continues = !content.blocks.empty() && content.blocks.back().kind == kind;
    size_t const blockAt = continues ? content.blocks.back().offset : record.bytes().size();
    if (!continues)
        added.insert(added.begin(), {uint8_t(kind), 0, 0});
    if (!record.append(added))
        return kEepromNoRoom;
    // The block reaches to the record's end.
    size_t const begin = blockAt + kBlockHead;
    putU16Be(record.payload(), blockAt + 1 - kRecordHead, uint32_t(record.bytes().size() - begin));
    return kEepromOk;
}

EepromStatus EepromAddRegister(HeadboardEeprom& eeprom, EepromRecord& record, char const* reg,
                               char const* bitfield, uint32_t value) {
    std::optional<RegisterEntry> entry = findEntry(eeprom.sensor, reg, bitfield);
    if (!entry)
        return kEepromFailed;
    entry->value = value;
    return EepromAddEntry(eeprom, record, *entry);
}

EepromStatus EepromAddRegisterCurrent(HeadboardEeprom& eeprom, EepromRecord& record, char const* reg,
                                      char const* bitfield) {
    Sensor const& sensor = eeprom.sensor;
    std::optional<RegisterEntry> entry = findEntry(sensor, reg, bitfield);
    if (!entry)
        return kEepromFailed;
    entry->value = sensor.readRegister(reg, bitfield);
    return EepromAddEntry(eeprom, record, *entry);
}

EepromStatus EepromAddLine(EepromRecord& record, std::string const& text) {
    int64_t const needed = record.length() + int64_t(text.size()) + kRecordHead;
    if (needed >= int64_t{record.capacity()} - kLineReserve)
        return kEepromNoRoom;
    auto const* const bytes = reinterpret_cast<uint8_t const*>(text.c_str());
    return record.append({bytes, text.size() + 1}) ? kEepromOk : kEepromNoRoom;
}

EepromStatus EepromGetEntry(HeadboardEeprom& eeprom, std::span<uint8_t const> record, int32_t n,
                            RegisterEntry& entry) {
    std::optional<SensorInfo> const info = eeprom.sensor.info();
    auto left = size_t(std::max(n, 0));
    for (EntryBlock const& block : splitRegisterSet(record).blocks) {
        size_t const size = entrySize(block.kind);
        size_t const count = block.entries.size() / size;
        if (left < count) {
            entry = decodeEntry(block.entries.subspan(left * size, size), block.kind, info);
            return kEepromOk;
        }
        left -= count;
    }
    return kEepromFailed;
}

int32_t EepromGetLine(std::span<uint8_t const> record, int32_t n, std::string* line) {
    record = cutToLength(record);
    std::span<uint8_t const> const content = record.subspan(contentOffset(record));
    std::string_view rest(reinterpret_cast<char const*>(content.data()), content.size());
    for (int32_t i = 0; !rest.empty(); ++i) {
        std::string_view const text = rest.substr(0, rest.find('\0'));
        if (i >= n) {
            if (line)
                *line = text;
            return int32_t(text.size());
        }
        rest.remove_prefix(std::min(rest.size(), text.size() + 1));
    }
    return kEepromFailed;
}
} // namespace kestra
