#include "tools/headboard-image/record_display.h"

#include "common/sensor.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tools/headboard-image/chain_check.h"
#include "tools/headboard-image/printed_text.h"

#include <algorithm>

using namespace kestra;

namespace headboard_image {
namespace {
constexpr size_t kTypeWidth = 14;
constexpr size_t kLengthWidth = 6;

struct EntryColumn {
    char const* title;
    size_t width;
    std::string (*text)(RegisterEntry const&, EntryKind);
};
constexpr EntryColumn kEntryColumns[] = {
    {"class", 7, [](RegisterEntry const& entry, EntryKind) { return std::to_string(entry.registerClass); }},
    {"id", 12, [](RegisterEntry const& entry, EntryKind) { return hexadecimal(entry.id, 2); }},
    {"address", 12, [](RegisterEntry const& entry, EntryKind) { return hexadecimal(entry.address, 4); }},
    // A short register entry leaves the size to the sensor.
    {"size", 6,
     [](RegisterEntry const& entry, EntryKind kind) {
         return kind == EntryKind::ShortRegister ? std::string("-") : std::to_string(entry.size);
     }},
    {"mask", 12, [](RegisterEntry const& entry, EntryKind) { return hexadecimal(entry.mask, 4); }},
    {"value", 0, [](RegisterEntry const& entry, EntryKind) { return hexadecimal(entry.value, 4); }},
};

std::string entryTitle() {
    std::string line;
    for (EntryColumn const& shown : kEntryColumns)
        line += column(shown.title, shown.width);
    return line + '\n';
}

std::string entryLine(RegisterEntry const& entry, EntryKind kind) {
    std::string line;
    for (EntryColumn const& shown : kEntryColumns)
        line += column(shown.text(entry, kind), shown.width);
    return line + '\n';
}

// Whether it makes a difference that the high byte of an address might be a page.
bool mayHoldPage(RegisterEntry const& entry, EntryKind kind) {
    constexpr uint32_t kHighestShortAddress = 0xFF;
    return kind == EntryKind::ShortRegister && entry.address > kHighestShortAddress;
}

// What decides how short entries are decoded; without it they are taken plainly.
std::optional<SensorInfo> sensorOf(Addressing addressing) {
    if (addressing == Addressing::Plain)
        return std::nullopt;
    SensorInfo sensor;
    sensor.registerAddressWidth = addressBits(addressing);
    return sensor;
}

std::string entriesText(RegisterSetContent const& content, Addressing addressing) {
    std::optional<SensorInfo> const sensor = sensorOf(addressing);
    std::string text = content.blocks.empty() ? std::string() : entryTitle();
    bool pagesArePossible = false;
    for (EntryBlock const& block : content.blocks) {
        size_t const size = entrySize(block.kind);
        for (size_t at = 0; block.entries.size() - at >= size; at += size) {
            RegisterEntry const entry = decodeEntry(block.entries.subspan(at, size), block.kind, sensor);
            pagesArePossible = pagesArePossible || mayHoldPage(entry, block.kind);
            text += entryLine(entry, block.kind);
        }
    }
    if (pagesArePossible)
        text += "(Addresses without a size are shown whole; --paged takes their high byte as the page.)\n";
    return text;
}

std::string linesText(std::span<uint8_t const> record) {
    std::string text, line;
    for (int32_t n = 0; EepromGetLine(record, n, &line) >= 0; ++n)
        text += quoted(line) + '\n';
    return text;
}

std::string registerSetText(RecordStore const& store, RecordPlace const& place, Addressing addressing) {
    RegisterSetContent const content = splitRegisterSet(store.record(place));
    if (holdsLines(content))
        return linesText(store.record(place));
    return entriesText(content, addressing) +
           hexDump(content.rest, place.offset + int32_t(content.restOffset));
}

std::string contentText(RecordStore const& store, RecordPlace const& place, Addressing addressing) {
    switch (recordPayload(place.type)) {
    case RecordPayload::Text:
        break; // in the first line
    case RecordPayload::RegisterSet:
        return registerSetText(store, place, addressing);
    case RecordPayload::Opaque:
    case RecordPayload::NamedData: {
        size_t const name = std::min(recordNameWidth(place.type), size_t(place.length()));
        size_t const begin = kRecordHead + name;
        return hexDump(store.record(place).subspan(begin), place.offset + int32_t(begin));
    }
    }
    return {};
}
} // namespace

std::string recordLine(RecordStore const& store, RecordPlace const& place) {
    std::string const line = offsetText(place.offset) + "  " + column(typeText(place.type), kTypeWidth);
    std::string const length = std::to_string(place.length());
    if (recordPayload(place.type) == RecordPayload::Opaque)
        return line + length + '\n';
    return line + column(length, kLengthWidth) + quoted(EepromRecordText(*store.eeprom(), place.offset)) +
           '\n';
}

Outcome listRecords(RecordStore const& store) {
    Chain const chain = store.chain();
    Outcome outcome;
    for (RecordPlace const& place : chain.records)
        outcome.output += recordLine(store, place);
    if (chain.records.empty() && chain.end == ChainEnd::Marked)
        outcome.output = "no records\n";
    if (auto const fault = chainFault(store, chain)) {
        outcome.exitCode = kExitRefused;
        outcome.complaint = findingText(*fault) + '\n';
    }
    return outcome;
}

Outcome showRecord(RecordStore const& store, int32_t offset, Addressing addressing) {
    Chain const chain = store.chain();
    RecordPlace const* const place = chain.at(offset);
    if (!place) {
        std::string why = "no record begins at " + offsetText(offset);
        if (auto const fault = chainFault(store, chain))
            why += '\n' + findingText(*fault);
        return refused(why);
    }
    Outcome outcome;
    outcome.output = recordLine(store, *place) + contentText(store, *place, addressing);
    std::vector<Finding> const findings = checkRecord(*place, store.record(*place));
    if (hasFault(findings)) {
        outcome.exitCode = kExitRefused;
        outcome.complaint = findingLines(findings);
    }
    return outcome;
}
} // namespace headboard_image
