#include "simulator/camera/stored_records.h"

#include "simulator/camera/start_up_record.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <tuple>

namespace simulator {
namespace {
constexpr uint8_t kMagic[] = {'V', 'Y', 'E', 'E'};
constexpr size_t kFirstRecord = 5;
constexpr size_t kChainEnd = 8176;  // single bytes that say what the headboard is lie behind
constexpr size_t kRecordHeader = 3; // type, length
constexpr uint8_t kEnd = 0xFF;

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

StoredSetting settingOf(StoredEntry const& entry, RegisterMap& registers) {
    auto const* const reg = registers.find(entry.addressSpace, entry.id, entry.address);
    return {.offset = entry.offset,
            .name = reg ? reg->name : QByteArray(),
            .place = QStringLiteral("%1/%2/0x%3")
                         .arg(entry.addressSpace)
                         .arg(entry.id)
                         .arg(entry.address, 4, 16, QLatin1Char('0')),
            .value = entry.value,
            .mask = entry.mask};
}

StoredRecord decoded(EepromBytes const& whole, uint32_t registerAddressWidth, RegisterMap& registers) {
    TypeRow const row = rowOf(whole.byte(0));
    EepromBytes const payload = whole.from(kRecordHeader);
    StoredRecord record{.offset = whole.offset(),
                        .size = whole.size(),
                        .type = row.type,
                        .typeName = QString::fromLatin1(row.name),
                        .text = textIn(payload, row.textSize),
                        .settings = {},
                        .fault = {}};
    std::vector<StoredEntry> entries;
    // What is sound before a fault is shown all the same.
    if (row.holdsRegisters)
        std::ignore = readEntries(payload, registerAddressWidth, entries, &record.fault);
    for (StoredEntry const& entry : entries)
        record.settings.push_back(settingOf(entry, registers));
    return record;
}
} // namespace

std::vector<StoredRecord> storedRecords(EepromContents const& contents, uint32_t registerAddressWidth,
                                        RegisterMap& registers) {
    std::vector<StoredRecord> records;
    if (!std::equal(std::begin(kMagic), std::end(kMagic), contents.begin()))
        return records;
    EepromBytes rest = EepromBytes(contents, 0).part(kFirstRecord, kChainEnd - kFirstRecord);
    while (rest.size() > 0 && rest.byte(0) != kEnd) {
        if (!rest.holds(0, kRecordHeader) || !rest.holds(kRecordHeader, rest.big16(1))) {
            TypeRow const row = rowOf(rest.byte(0));
            records.push_back({.offset = rest.offset(),
                               .size = rest.size(),
                               .type = row.type,
                               .typeName = QString::fromLatin1(row.name),
                               .text = {},
                               .settings = {},
                               .fault = QStringLiteral("runs over the end")});
            break;
        }
        size_t const size = kRecordHeader + rest.big16(1);
        records.push_back(decoded(rest.part(0, size), registerAddressWidth, registers));
        rest = rest.from(size);
    }
    return records;
}
} // namespace simulator
