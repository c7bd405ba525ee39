#include "headboard/register_entry.h"

#include "headboard/record_format.h"

namespace {

constexpr uint32_t kSensorRegister = 0;
constexpr uint32_t kFirmwareVariable = 1;

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
