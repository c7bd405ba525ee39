#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tests/support/fake_headboard.h"
#include "tools/headboard-image/chain_check.h"
#include "tools/headboard-image/record_display.h"

#include <QCommandLineParser>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <tuple>

using namespace kestra;

namespace {
using headboard_image::kExitDone;
using headboard_image::Outcome;
using simulator::EepromContents;
using Bytes = std::vector<uint8_t>;
using Records = std::vector<Bytes>; // head and payload each, in the chain's order

/// What one press of a button stores: mostly one record, with a factory calibration its time stamp too.
using Save = std::vector<EepromRecord>;

/// What is on a board with a history of saves, and the save during which the power will fail.
using Scene = std::pair<EepromContents, Save>;

constexpr int32_t kCapacity = 8112;
constexpr size_t kStoreSize = 8176; // behind it lie the bytes that say what the headboard is

struct Dice {
    /// Not by a distribution of the library: those differ from system to system.
    uint32_t between(uint32_t least, uint32_t most) {
        return least + uint32_t(random() % (most - least + 1));
    }
    uint32_t below(uint32_t count) { return between(0, count - 1); }

    std::mt19937 random;
};

EepromRecord textRecord(uint8_t type, std::string const& text) {
    EepromRecord record = EepromNewRecord(type, kCapacity, 0);
    (void)record.append({reinterpret_cast<uint8_t const*>(text.c_str()), text.size() + 1});
    return record;
}

EepromRecord randomText(Dice& dice, uint8_t type) {
    std::string text(dice.between(1, 24), ' ');
    std::ranges::generate(text, [&] { return char('0' + dice.below(75)); });
    return textRecord(type, text);
}

// The coefficients of a sensor's shading or colour correction, then a few switches.
EepromRecord registerSet(Dice& dice, uint8_t type, char const* name, uint32_t count) {
    EepromShare const noDevice = HeadboardEepromCreate(nullptr);
    EepromRecord record = makeRegisterSet(type, kCapacity, name);
    RegisterEntry entry;
    for (uint32_t i = 0; i < count; ++i) {
        entry.address = 0x3600 + 2 * i;
        entry.value = dice.below(0x10000);
        (void)EepromAddEntry(*noDevice, record, entry);
    }
    entry.mask = 0x8000;
    entry.value = 1;
    for (uint32_t i = dice.below(3); i > 0; --i)
        (void)EepromAddEntry(*noDevice, record, entry);
    return record;
}

EepromRecord stateLines(Dice& dice) {
    EepromRecord record = makeRegisterSet(kRecordSwPga, kCapacity, "Lens Correction");
    for (char const* const colour : {"Red", "Green1", "Green2", "Blue"})
        (void)EepromAddLine(record,
                            std::string("Lens Curve ") + colour + ',' + std::to_string(dice.below(1000)));
    return record;
}

EepromRecord customerData(Dice& dice) {
    EepromRecord record = EepromNewRecord(kRecordCustomerData, kCapacity, int32_t(dice.between(1, 200)));
    std::ranges::generate(record.payload(), [&] { return uint8_t(dice.below(256)); });
    return record;
}

// A polynomial correction has about 120 registers, a table of gains more; a sensor's own set keeps its size
// from save to save, so sizes repeat.
Save randomSave(Dice& dice) {
    constexpr char const* kLabels[] = {"FACTORY", "Lens Correction", "A"};
    constexpr uint32_t kCounts[] = {40, 106, 118, 118, 118, 242};
    switch (dice.below(10)) {
    case 0:
        return {randomText(dice, kRecordHeadboardId)};
    case 1:
        return {randomText(dice, kRecordLensType)};
    case 2:
        return {registerSet(dice, kRecordCcm, nullptr, dice.between(12, 40))};
    case 3:
        return {dice.below(2) == 0 ? stateLines(dice) : customerData(dice)};
    default:
        break;
    }
    char const* const label = kLabels[dice.below(std::size(kLabels))];
    EepromRecord const set = registerSet(dice, kRecordPga, label, kCounts[dice.below(std::size(kCounts))]);
    if (label != kLabels[0])
        return {set};
    std::string const minute = std::to_string(dice.between(10, 59));
    return {textRecord(kRecordTimeStamp, "2024/05/31 23:" + minute + ":07"), set};
}

// Saves as the pages do: the records replace older ones in the image, then the image is flushed.
int32_t store(EepromShare const& eeprom, Save const& save) {
    for (EepromRecord const& record : save) {
        int32_t const status = EepromReplaceRecord(*eeprom, record);
        if (status != kEepromOk)
            return status;
    }
    return HeadboardEepromFlush(*eeprom);
}

// The same number gives the same scene.
Scene randomScene(uint32_t number) {
    Dice dice{std::mt19937(number)};
    FakeHeadboard board(simulator::formattedContents());
    EepromShare const eeprom = HeadboardEepromCreate(board.camera());
    for (uint32_t saves = dice.between(1, 14); saves > 0; --saves)
        (void)store(eeprom, randomSave(dice));
    Save const save = randomSave(dice);
    auto const identity = std::span(board.device).subspan(kStoreSize);
    std::ranges::generate(identity, [&] { return uint8_t(dice.below(256)); });
    return {board.device, save};
}

/// What is in a device, and what `list` and `check` say of it.
struct Report {
    explicit Report(EepromContents const& contents) : store(contents) {
        auto const chain = store.chain();
        for (auto const& place : chain.records) {
            auto const bytes = store.record(place);
            records.emplace_back(bytes.begin(), bytes.end());
        }
        isWhole = chain.end == headboard_image::ChainEnd::Marked;
        Outcome const list = listRecords(store), check = checkImage(store);
        bool const listIsClean = list.exitCode == kExitDone;
        checkIsClean = check.exitCode == kExitDone;
        // An empty list says so in a line of its own.
        auto const lines = std::max(records.size(), size_t{isWhole});
        // The complaint without its line feed.
        std::string const fault = list.complaint.substr(0, list.complaint.size() - !listIsClean);
        isTruthful = listIsClean == isWhole && fault.empty() == isWhole &&
                     size_t(std::ranges::count(list.output, '\n')) == lines &&
                     check.output.find(fault) != std::string::npos && (isWhole || !checkIsClean) &&
                     (check.output.find("all is well") != std::string::npos) == checkIsClean;
    }

    /// Whether a search for this record's type and name finds it, byte for byte.
    [[nodiscard]] bool finds(std::span<uint8_t const> record) const {
        std::string const name(recordText(record[0], record.subspan(kRecordHead)));
        Bytes bytes(record.size());
        int32_t const size = EepromReadNth(*store.eeprom(), record[0], name.c_str(), 0, bytes);
        return size == int32_t(bytes.size()) && std::ranges::equal(bytes, record);
    }
    [[nodiscard]] bool holds(Save const& save) const {
        return std::ranges::all_of(save, [&](EepromRecord const& record) { return finds(record.bytes()); });
    }

    headboard_image::RecordStore store;
    Records records; ///< as far as the chain goes
    bool isWhole;    ///< the chain
    bool isTruthful; ///< damage is named with its place, and nothing is named where there is none
    bool checkIsClean;
};

// Whether two records stand for the same thing, so that one replaces the other.
bool isSameKind(std::span<uint8_t const> a, std::span<uint8_t const> b) {
    return a[0] == b[0] && (recordNameWidth(a[0]) == 0 || recordText(a[0], a.subspan(kRecordHead)) ==
                                                              recordText(b[0], b.subspan(kRecordHead)));
}

/// What a cut leaves, told by somebody who knows what should be there.
enum Remains : uint8_t { kAsBefore, kAsAfter, kBrokenChain, kDamagedRecord, kMixedRecords, kRemains };
constexpr char const* kRemainsTexts[kRemains] = {
    "all records as before the save", "all records as after it",  "broken chain",
    "damaged record, whole chain",    "other records, all sound",
};

/// What is counted of cuts that left the same.
enum Column : uint8_t {
    kCuts,
    kCheckNames,   ///< `check` finds a fault
    kOthersHarmed, ///< a record that the save does not replace is lost
    kNextSaves,    ///< the same save again succeeds
    kMended,       ///< and leaves nothing for `check` to name
    kColumns
};
using Row = std::array<std::atomic<uint64_t>, kColumns>;

/// Of all scenes, whichever thread tried them.
struct Tally {
    std::atomic<uint64_t> saves = 0;
    std::atomic<uint64_t> savesWithBreak = 0; ///< a cut at some byte breaks the chain
    std::array<Row, kRemains> rows{};
    std::mutex failing;
    std::vector<std::string> failures; ///< promises that were not kept
};

// Cuts the power after every byte of a scene's save, all but the last, looks at what is left each time, and
// mends it.
class CutSave {
public:
    CutSave(uint32_t number, Tally& tally) : m_number(number), m_tally(tally) {
        std::tie(m_contents, m_save) = randomScene(number);
        m_before = Report(m_contents).records;
    }

    void run() {
        FakeHeadboard board(m_contents);
        int32_t const status = store(HeadboardEepromCreate(board.camera()), m_save);
        uint64_t const length = board.eeprom.bytesWritten();
        Report const whole(board.device);
        m_after = whole.records;
        expect(status == kEepromOk && whole.holds(m_save), "without a cut the save stores what it should",
               length);
        bool breaks = false;
        for (uint64_t cut = 1; cut < length; ++cut)
            breaks |= tryCut(cut) == kBrokenChain;
        m_tally.saves += length > 1;
        m_tally.savesWithBreak += breaks;
    }

private:
    void expect(bool isKept, char const* promise, uint64_t cut) {
        if (isKept)
            return;
        std::scoped_lock const lock(m_tally.failing);
        m_tally.failures.push_back("scene " + std::to_string(m_number) + ", cut after byte " +
                                   std::to_string(cut) + ": not so: " + promise);
    }

    EepromContents contentsAfterCut(uint64_t cut) {
        FakeHeadboard board(m_contents);
        board.eeprom.plan({DeviceFault::PowerCut, cut, true});
        EepromShare const eeprom = HeadboardEepromCreate(board.camera());
        int32_t const status = store(eeprom, m_save);
        expect(status < 0, "the save reports its failure", cut);
        expect(board.eeprom.bytesWritten() == cut, "the power fails at this byte", cut);
        EepromContents const left = board.device;
        // Only the headboard lost its power: the program still has the image, and in it what was not written.
        board.plan(DeviceFault::None);
        bool const isStored = store(eeprom, m_save) == kEepromOk;
        expect(isStored && Report(board.device).records == m_after,
               "the same program, asked to save again, stores everything", cut);
        return left;
    }

    [[nodiscard]] Remains classify(Report const& left) const {
        if (!left.isWhole)
            return kBrokenChain;
        if (left.records == m_after)
            return kAsAfter;
        if (left.records == m_before)
            return kAsBefore;
        return left.checkIsClean ? kMixedRecords : kDamagedRecord;
    }

    // Whether a record that the save does not replace can no longer be found as it was.
    [[nodiscard]] bool harmsOthers(Report const& left) const {
        return std::ranges::any_of(m_before, [&](Bytes const& record) {
            bool const isReplaced = std::ranges::any_of(
                m_save, [&](EepromRecord const& saved) { return isSameKind(saved.bytes(), record); });
            return !isReplaced && !left.finds(record);
        });
    }

    Remains tryCut(uint64_t cut) {
        EepromContents const left = contentsAfterCut(cut);
        Report const told(left);
        Remains const remains = classify(told);
        expect(told.isTruthful && (told.checkIsClean || remains == kBrokenChain || remains == kDamagedRecord),
               "list and check say what is left", cut);
        FakeHeadboard board(left);
        // A board with a broken chain is not taken for a blank one, which would be formatted in silence.
        EepromState const presence = probeEeprom(*HeadboardEepromCreate(board.camera()));
        expect(presence == EepromState::Present && board.eeprom.bytesWritten() == 0,
               "a test for presence leaves the board as it is", cut);
        Row& row = m_tally.rows[remains];
        ++row[kCuts];
        row[kCheckNames] += !told.checkIsClean;
        row[kOthersHarmed] += harmsOthers(told);
        saveAgain(left, cut, row);
        startAnew(left, cut);
        return remains;
    }

    // The power is back, the program starts again, and somebody presses the same button.
    void saveAgain(EepromContents const& left, uint64_t cut, Row& row) {
        FakeHeadboard board(left);
        int32_t const status = store(HeadboardEepromCreate(board.camera()), m_save);
        if (status != kEepromOk) {
            expect(board.eeprom.bytesWritten() == 0, "a save that fails on what is left writes nothing", cut);
            return;
        }
        Report const told(board.device);
        ++row[kNextSaves];
        row[kMended] += told.checkIsClean;
        expect(told.isWhole, "a successful save leaves a whole chain", cut);
        expect(told.holds(m_save), "what a successful save stored is found", cut);
    }

    void startAnew(EepromContents const& left, uint64_t cut) {
        FakeHeadboard board(left);
        EepromShare const eeprom = HeadboardEepromCreate(board.camera());
        bool const done = EepromFormat(*eeprom, -1) == kEepromOk && store(eeprom, m_save) == kEepromOk;
        Report const told(board.device);
        expect(done && told.checkIsClean && told.records.size() == m_save.size() && told.holds(m_save),
               "a format mends everything", cut);
    }

    uint32_t m_number;
    Tally& m_tally;
    EepromContents m_contents;
    Save m_save;
    Records m_before, m_after;
};

void print(Tally const& tally) {
    std::array<uint64_t, kColumns> sum{};
    for (Row const& row : tally.rows)
        std::ranges::transform(sum, row, sum.begin(), std::plus<>());
    auto const printRow = [&](char const* what, auto const& counts) {
        std::printf("%-31s", what);
        for (uint64_t const count : counts)
            std::printf("%12llu", static_cast<unsigned long long>(count));
        std::printf("%10.2f %%\n", 100.0 * double(counts[kCuts]) / double(std::max<uint64_t>(sum[kCuts], 1)));
    };
    unsigned long long const saves = tally.saves;
    std::printf("%llu saves, %llu cuts\n\n%31s", saves, static_cast<unsigned long long>(sum[kCuts]), "");
    for (char const* const title : {"cuts", "by check", "others lost", "next save", "mends all", "share"})
        std::printf("%12s", title);
    std::printf("\n");
    for (size_t i = 0; i < kRemains; ++i)
        printRow(kRemainsTexts[i], tally.rows[i]);
    printRow("all", sum);
    std::printf("%llu of %llu saves break the chain when the power fails at the wrong byte\n",
                static_cast<unsigned long long>(tally.savesWithBreak.load()), saves);
    std::fflush(stdout);
}

constexpr size_t kMostFailuresShown = 20;

// The scenes of consecutive numbers, shared out among the cores.
void cutAll(uint32_t saves, uint32_t seed, Tally& tally) {
    std::atomic<uint32_t> next = 0;
    std::vector<std::jthread> threads(std::max(std::thread::hardware_concurrency(), 1U));
    for (std::jthread& thread : threads)
        thread = std::jthread([&] {
            for (uint32_t i = next++; i < saves; i = next++)
                CutSave(seed + i, tally).run();
        });
}
} // namespace

int main(int argc, char** argv) {
    QCommandLineParser parser;
    parser.addOptions({{"saves", {}, "COUNT", "1000"}, {"seed", {}, "NUMBER", "1"}});
    if (!parser.parse(QStringList(argv, argv + argc)) || !parser.positionalArguments().isEmpty()) {
        std::fputs("usage: power-cuts [--saves COUNT] [--seed NUMBER]\n", stderr);
        return 2;
    }
    uint32_t const saves = parser.value("saves").toUInt();
    Veyra2 library;
    FakeHeadboard::fillIn(library);
    installVeyra2(library);
    std::printf("cutting the power after every byte of %u saves; this takes minutes\n", saves);
    std::fflush(stdout);
    Tally tally;
    cutAll(saves, parser.value("seed").toUInt(), tally);
    print(tally);
    for (size_t i = 0; i < std::min(tally.failures.size(), kMostFailuresShown); ++i)
        std::fprintf(stderr, "%s\n", tally.failures[i].c_str());
    if (!tally.failures.empty())
        std::fprintf(stderr, "%zu promises were not kept\n", tally.failures.size());
    if (tally.saves < saves)
        std::fputs("fewer saves were tried than were asked for\n", stderr);
    return tally.failures.empty() && tally.saves >= saves ? 0 : 1;
}
