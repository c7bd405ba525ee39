#include "headboard/register_set.h"

#include "headboard/record_format.h"

#include <algorithm>
#include <utility>

namespace kestra {

namespace {

constexpr size_t kFullSize = 18;
constexpr size_t kShortSize = 4;

constexpr uint32_t kShortRegisterBits = 16;
constexpr uint32_t kOneByteVariable = 0x8000;
constexpr uint32_t kMostVariableSize = 2;

// Registers of these sensors are addressed by a page in the high byte of the address word.
bool hasPagedAddress(std::optional<SensorInfo> const& sensor) {
    constexpr uint32_t kNineBits = 9;
    return sensor && sensor->registerAddressWidth < kNineBits;
}

bool fitsShortRegister(RegisterEntry const& entry, std::optional<SensorInfo> const& sensor) {
    return entry.mask == 0 && (entry.size == 0 || !sensor ||
                               uint64_t{entry.size} * sensor->registerDataWidth == kShortRegisterBits);
}

uint32_t shortRegisterSize(std::optional<SensorInfo> const& sensor) {
    return sensor && sensor->registerDataWidth != 0 ? kShortRegisterBits / sensor->registerDataWidth : 1;
}

RegisterEntry decodeFull(std::span<uint8_t const> bytes) {
    return {.registerClass = bytes[0],
            .id = getU32Be(bytes, 1),
            .address = getU32Be(bytes, 5),
            .size = bytes[9],
            .mask = getU32Be(bytes, 10),
            .value = getU32Be(bytes, 14)};
}

void encodeFull(RegisterEntry const& entry, std::span<uint8_t> bytes) {
    bytes[0] = uint8_t(entry.registerClass);
    putU32Be(bytes, 1, entry.id);
    putU32Be(bytes, 5, entry.address);
    bytes[9] = uint8_t(entry.size);
    putU32Be(bytes, 10, entry.mask);
    putU32Be(bytes, 14, entry.value);
}

// The kind that an entry is written in: a short one when class, size and mask allow it. Id, address and value
// are not looked at, so a short kind may cut them.
EntryKind chooseEntryKind(RegisterEntry const& entry, std::optional<SensorInfo> const& sensor) {
    if (entry.registerClass == kFirmwareVariable && entry.size <= kMostVariableSize && entry.mask == 0)
        return EntryKind::ShortVariable;
    if (entry.registerClass == kSensorRegister && fitsShortRegister(entry, sensor))
        return EntryKind::ShortRegister;
    return EntryKind::Full;
}

std::vector<uint8_t> encodeEntry(RegisterEntry const& entry, EntryKind kind,
                                 std::optional<SensorInfo> const& sensor) {
    std::vector<uint8_t> bytes(entrySize(kind));
    switch (kind) {
    case EntryKind::Full:
        encodeFull(entry, bytes);
        return bytes;
    case EntryKind::ShortRegister:
        putU16Be(bytes, 0,
                 hasPagedAddress(sensor) ? (entry.id & 0xFF) << 8 | (entry.address & 0xFF) : entry.address);
        break;
    case EntryKind::ShortVariable:
        putU16Be(bytes, 0, (entry.size & 1) << 15 | (entry.id & 31) << 10 | (entry.address & 0x3FF));
        break;
    }
    putU16Be(bytes, 2, entry.value);
    return bytes;
}

constexpr int32_t kEntryReserve = 11; // of the capacity; an entry may still end beyond it
constexpr int32_t kLineReserve = 4;

// What stands behind the name, of as many bytes as the record says and really has.
std::span<uint8_t const> contentOf(std::span<uint8_t const> record) {
    if (record.size() < kRecordHead + kRecordName)
        return {};
    size_t const length = std::min<size_t>(getU16Be(record, 1), record.size() - kRecordHead);
    return length < kRecordName ? std::span<uint8_t const>()
                                : record.subspan(kRecordHead + kRecordName, length - kRecordName);
}

// The blocks of a record that nothing else follows; empty when it holds something else.
std::optional<std::vector<EntryBlock>> wholeBlocks(EepromRecord const& record) {
    RegisterSetContent content = splitRegisterSet(record.bytes());
    bool const isWhole = record.length() >= kRecordName && content.restOffset == record.bytes().size() &&
                         std::ranges::all_of(content.blocks, [](EntryBlock const& block) {
                             return block.entries.size() == block.length;
                         });
    return isWhole ? std::optional(std::move(content.blocks)) : std::nullopt;
}

// Address-space kinds of register descriptions whose entries tell id and size, or the id with a condition.
bool isPlainKind(uint32_t kind) {
    constexpr uint32_t kPlain[] = {1, 2, 5, 6, 8, 9};
    return std::find(std::begin(kPlain), std::end(kPlain), kind) != std::end(kPlain);
}
bool isSecondaryMapKind(uint32_t kind) {
    return kind == 4 || kind == 7;
}

// The entry of a register without mask and value.
RegisterEntry entryFor(Sensor const& sensor, vy_RegisterDescription const& reg) {
    std::optional<SensorInfo> const info = sensor.info();
    RegisterEntry entry;
    entry.address = reg.address;
    if (isPlainKind(reg.addressSpace)) {
        entry.registerClass = reg.addressSpace;
        entry.id = reg.id;
        entry.size = sensor.dataSize(reg);
    } else if (isSecondaryMapKind(reg.addressSpace)) {
        entry.registerClass = reg.addressSpace;
        entry.id = info && (info->secondaryMaps >> reg.addressSpace & 1) != 0 ? reg.id : 0;
    } else {
        entry.id = info && info->hasPageSelect ? reg.id : 0;
    }
    return entry;
}

// The entry of a register or bitfield by name, as yet without a value; empty when the sensor lacks it.
std::optional<RegisterEntry> findEntry(Sensor const& sensor, char const* reg, char const* bitfield) {
    bool const isWhole = *bitfield == '\0';
    if (!(isWhole ? sensor.existsRegister(reg) : sensor.existsBitfield(reg, bitfield)))
        return std::nullopt;
    uint32_t mask = 0;
    if (!isWhole) {
        vy_BitfieldDescription const* const found = sensor.findBitfield(reg, bitfield);
        if (!found)
            return std::nullopt;
        mask = found->mask;
    }
    vy_RegisterDescription const* const description = sensor.findRegister(reg);
    if (!description)
        return std::nullopt;
    RegisterEntry entry = entryFor(sensor, vy_RegisterDescription(*description));
    entry.mask = mask;
    return entry;
}

} // namespace

std::optional<EntryKind> entryKind(uint8_t code) {
    switch (EntryKind(code)) {
    case EntryKind::Full:
    case EntryKind::ShortRegister:
    case EntryKind::ShortVariable:
        return EntryKind(code);
    }
    return std::nullopt;
}

size_t entrySize(EntryKind kind) {
    return kind == EntryKind::Full ? kFullSize : kShortSize;
}

RegisterEntry decodeEntry(std::span<uint8_t const> bytes, EntryKind kind,
                          std::optional<SensorInfo> const& sensor) {
    if (kind == EntryKind::Full)
        return decodeFull(bytes);
    uint32_t const word = getU16Be(bytes, 0);
    RegisterEntry entry;
    entry.value = getU16Be(bytes, 2);
    if (kind == EntryKind::ShortVariable) {
        entry.registerClass = kFirmwareVariable;
        entry.id = word >> 10 & 31;
        entry.address = word & 0x3FF;
        entry.size = (word & kOneByteVariable) != 0 ? 1 : 2;
        return entry;
    }
    entry.registerClass = kSensorRegister;
    entry.id = hasPagedAddress(sensor) ? word >> 8 : 0;
    entry.address = hasPagedAddress(sensor) ? word & 0xFF : word;
    entry.size = shortRegisterSize(sensor);
    return entry;
}

RegisterSetContent splitRegisterSet(std::span<uint8_t const> record) {
    size_t const told = record.size() < kRecordHead ? 0 : kRecordHead + size_t{getU16Be(record, 1)};
    record = record.first(std::min(record.size(), told));
    size_t at = std::min<size_t>(record.size(), kRecordHead + kRecordName);
    RegisterSetContent content;
    while (record.size() - at >= kBlockHead && entryKind(record[at])) {
        size_t const length = getU16Be(record, at + 1);
        size_t const begin = at + kBlockHead;
        size_t const there = std::min(length, record.size() - begin);
        content.blocks.push_back({at, record[at], length, record.subspan(begin, there)});
        at = begin + there;
    }
    content.restOffset = at;
    if (at < record.size() && record[at] != kErased)
        content.rest = record.subspan(at);
    return content;
}

bool holdsLines(RegisterSetContent const& content) {
    return content.blocks.empty() && !content.rest.empty() && !entryKind(content.rest.front());
}

EepromRecord makeRegisterSet(HeadboardEeprom const& eeprom, uint8_t type, char const* name) {
    return makeRegisterSet(type, eeprom.deviceSize - kReservedBytes, name);
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
    constexpr uint32_t kUsualVariableSize = 2;
    if (entry.registerClass == kFirmwareVariable && entry.size == 0)
        entry.size = kUsualVariableSize;

    auto const blocks = wholeBlocks(record);
    if (!blocks)
        return kEepromFailed;
    EntryKind const kind = chooseEntryKind(entry, info);
    std::vector<uint8_t> added = encodeEntry(entry, kind, info);
    auto const entryBytes = uint32_t(added.size());
    bool const continues = !blocks->empty() && blocks->back().kind == uint8_t(kind);
    size_t const lengthAt = (continues ? blocks->back().offset - kRecordHead : record.payload().size()) + 1;
    auto const blockLength = uint32_t(continues ? blocks->back().length : 0);
    if (!continues)
        added.insert(added.begin(), {uint8_t(kind), 0, 0});
    if (!record.append(added))
        return kEepromNoRoom;
    putU16Be(record.payload(), lengthAt, blockLength + entryBytes);
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
        auto const kind = EntryKind(block.kind);
        size_t const count = block.entries.size() / entrySize(kind);
        if (left < count) {
            entry = decodeEntry(block.entries.subspan(left * entrySize(kind), entrySize(kind)), kind, info);
            return kEepromOk;
        }
        left -= count;
    }
    return kEepromFailed;
}

int32_t EepromGetLine(std::span<uint8_t const> record, int32_t n, std::string* line) {
    std::span<uint8_t const> const content = contentOf(record);
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
