#include "hardening/power_cuts/remains.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "tools/headboard-image/chain_check.h"
#include "tools/headboard-image/record_display.h"

#include <algorithm>

using namespace kestra;

namespace power_cuts {
namespace {
using headboard_image::Chain;
using headboard_image::ChainEnd;
using headboard_image::kExitDone;
using headboard_image::kExitRefused;
using headboard_image::Outcome;
using headboard_image::RecordStore;

bool isIn(Records const& records, std::vector<uint8_t> const& record) {
    return std::ranges::find(records, record) != records.end();
}

// The record that a search for this one's type and name finds.
std::vector<uint8_t> found(RecordStore const& store, std::span<uint8_t const> like) {
    std::string const name(recordText(like[0], like.subspan(kRecordHead)));
    int32_t const offset = EepromFindRecord(*store.eeprom(), like[0], name.c_str(), 0);
    int32_t const size = offset < 0 ? offset : EepromReadRecord(*store.eeprom(), offset, {});
    if (size < 0)
        return {};
    std::vector<uint8_t> bytes(static_cast<size_t>(size));
    return EepromReadRecord(*store.eeprom(), offset, bytes) == size ? bytes : std::vector<uint8_t>();
}

bool isSame(std::span<uint8_t const> a, std::span<uint8_t const> b) { return std::ranges::equal(a, b); }

// Whether two records stand for the same thing, so that one replaces the other.
bool isSameKind(std::span<uint8_t const> a, std::span<uint8_t const> b) {
    return a[0] == b[0] && (recordNameWidth(a[0]) == 0 || recordText(a[0], a.subspan(kRecordHead)) ==
                                                              recordText(b[0], b.subspan(kRecordHead)));
}

// Both commands end with "refused" and name the place exactly when there is something to name.
bool tellsTheTruth(RecordStore const& store, Chain const& chain, Outcome const& list, Outcome const& check) {
    auto const fault = chainFault(store, chain);
    bool recordFault = false;
    for (auto const& place : chain.records)
        recordFault = recordFault || hasFault(checkRecord(place, store.record(place)));
    bool const listIsRight =
        fault ? list.exitCode == kExitRefused && list.complaint == findingText(*fault) + '\n'
              : list.exitCode == kExitDone && list.complaint.empty();
    bool const isClean = !fault && !recordFault;
    bool const checkIsRight = check.exitCode == (isClean ? kExitDone : kExitRefused) &&
                              (check.output.find("all is well") != std::string::npos) == isClean &&
                              (!fault || check.output.find(findingText(*fault)) != std::string::npos);
    // An empty list says so in a line of its own.
    size_t const lines = !fault && chain.records.empty() ? 1 : chain.records.size();
    return listIsRight && checkIsRight && std::ranges::count(list.output, '\n') == std::ptrdiff_t(lines);
}
} // namespace

Report report(simulator::EepromContents const& contents) {
    RecordStore const store(contents);
    Chain const chain = store.chain();
    Outcome const list = listRecords(store);
    Outcome const check = checkImage(store);
    Report told;
    told.isWhole = chain.end == ChainEnd::Marked;
    told.listIsClean = list.exitCode == kExitDone;
    told.checkIsClean = check.exitCode == kExitDone;
    told.isTruthful = tellsTheTruth(store, chain, list, check);
    for (auto const& place : chain.records) {
        auto const bytes = store.record(place);
        told.records.emplace_back(bytes.begin(), bytes.end());
    }
    return told;
}

Remains classify(Report const& left, Records const& before, Records const& after) {
    if (!left.isWhole)
        return Remains::BrokenChain;
    if (left.records == after)
        return Remains::AsAfter;
    if (left.records == before)
        return Remains::AsBefore;
    if (!left.checkIsClean)
        return Remains::DamagedRecord;
    bool const onlyStored = std::ranges::all_of(
        left.records, [&](auto const& record) { return isIn(before, record) || isIn(after, record); });
    return onlyStored ? Remains::OnlyStored : Remains::Mixed;
}

bool holds(simulator::EepromContents const& contents, Save const& save) {
    RecordStore const store(contents);
    return std::ranges::all_of(save, [&](EepromRecord const& record) {
        return isSame(found(store, record.bytes()), record.bytes());
    });
}

bool harmsOthers(simulator::EepromContents const& contents, Records const& before, Save const& save) {
    RecordStore const store(contents);
    return std::ranges::any_of(before, [&](std::vector<uint8_t> const& record) {
        bool const isReplaced = std::ranges::any_of(
            save, [&](EepromRecord const& saved) { return isSameKind(saved.bytes(), record); });
        return !isReplaced && !isSame(found(store, record), record);
    });
}
} // namespace power_cuts
