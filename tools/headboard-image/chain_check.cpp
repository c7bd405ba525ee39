#include "tools/headboard-image/chain_check.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "tools/headboard-image/printed_text.h"

#include <algorithm>

using namespace kestra;

namespace headboard_image {
namespace {
constexpr size_t kMagicSize = 4;
constexpr size_t kVersionOffset = 4;
constexpr uint8_t kKnownVersion = 1;

std::string describeMagic(std::span<uint8_t const> store) {
    std::span<uint8_t const> const magic = store.first(kMagicSize);
    if (std::ranges::count(magic, kErased) == std::ptrdiff_t(kMagicSize))
        return "the image is erased, not formatted";
    std::string_view const found(reinterpret_cast<char const*>(magic.data()), magic.size());
    return "the image is not formatted: it begins with " + quoted(found) + ", not with \"VYEE\"";
}

std::string describeRecordPastEnd(std::span<uint8_t const> rest) {
    std::string const record = "the record " + typeText(rest.front());
    if (rest.size() < size_t{kRecordHead})
        return record + " has no length: the store ends";
    size_t const length = getU16Be(rest, 1);
    size_t const missing = kRecordHead + length - rest.size();
    return record + ", length " + std::to_string(length) + ", runs past the end of the store by " +
           counted(int64_t(missing), "byte");
}

// Searches find the first record of a type and name and never a later one.
std::optional<Finding> hiddenRemark(RecordStore const& store, RecordPlace const& place) {
    if (recordPayload(place.type) == RecordPayload::Opaque)
        return std::nullopt;
    std::string const name(EepromRecordText(*store.eeprom(), place.offset));
    int32_t const first = EepromFindRecord(*store.eeprom(), place.type, name.c_str(), 0);
    if (first == place.offset)
        return std::nullopt;
    return Finding{place.offset, false,
                   "never found: the record at " + offsetText(first) + " has the same type and name"};
}

// Neither written nor read by the plug-in, whose chain ends there all the same.
std::optional<Finding> endMarkRemark(RecordStore const& store, Chain const& chain) {
    int32_t const last = store.size() - 1;
    if (chain.end != ChainEnd::Marked || chain.endOffset != last || store.lastByte() == kErased)
        return std::nullopt;
    return Finding{last, false,
                   "the chain ends at the store's last byte, which is " + hexadecimal(store.lastByte(), 2) +
                       ": the plug-in takes it for an end mark unread, other readers may not"};
}

std::vector<Finding> findingsOf(RecordStore const& store, Chain const& chain) {
    std::vector<Finding> findings;
    uint8_t const version = store.bytes()[kVersionOffset];
    if (chain.end != ChainEnd::NotFormatted && version != kKnownVersion)
        findings.push_back(
            {int32_t(kVersionOffset), false, "version " + std::to_string(version) + " is not known here"});
    for (RecordPlace const& place : chain.records) {
        std::vector<Finding> const inside = checkRecord(place, store.record(place));
        findings.insert(findings.end(), inside.begin(), inside.end());
        if (auto const hidden = hiddenRemark(store, place))
            findings.push_back(*hidden);
    }
    if (auto const remark = endMarkRemark(store, chain))
        findings.push_back(*remark);
    if (auto const fault = chainFault(store, chain))
        findings.push_back(*fault);
    return findings;
}

std::string roomText(RecordStore const& store, Chain const& chain) {
    int32_t used = 0;
    int32_t const free = EepromFreeSpace(*store.eeprom(), &used);
    return counted(int64_t(chain.records.size()), "record") + ", " + counted(used, "byte") + " used, " +
           std::to_string(free) + " available\n";
}
} // namespace

std::optional<Finding> chainFault(RecordStore const& store, Chain const& chain) {
    switch (chain.end) {
    case ChainEnd::Marked:
        break;
    case ChainEnd::NotFormatted:
        return Finding{0, true, describeMagic(store.bytes())};
    case ChainEnd::NoMark:
        return Finding{chain.endOffset, true, "the chain runs into the end of the store without an end mark"};
    case ChainEnd::RecordPastEnd:
        return Finding{chain.endOffset, true,
                       describeRecordPastEnd(store.bytes().subspan(size_t(chain.endOffset)))};
    }
    return std::nullopt;
}

Outcome checkImage(RecordStore const& store) {
    Chain const chain = store.chain();
    std::vector<Finding> const findings = findingsOf(store, chain);
    Outcome outcome;
    outcome.output = findingLines(findings);
    if (chain.end == ChainEnd::Marked)
        outcome.output += roomText(store, chain);
    auto const faults = std::ranges::count_if(findings, &Finding::isFault);
    outcome.output += faults == 0 ? "all is well\n" : counted(faults, "fault") + '\n';
    outcome.exitCode = faults == 0 ? kExitDone : kExitRefused;
    return outcome;
}
} // namespace headboard_image
