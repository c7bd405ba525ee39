#include "hardening/power_cuts/remains.h"
#include "headboard/eeprom_chain.h"
#include "tests/support/fake_headboard.h"

#include <QCommandLineParser>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <functional>
#include <mutex>
#include <thread>

using namespace kestra;
using namespace power_cuts;

namespace {
using simulator::EepromContents;

/// What is counted of cuts that left the same.
enum Column : uint8_t {
    kCuts,
    kListNames,    ///< `list` ends with a complaint
    kCheckNames,   ///< `check` finds a fault
    kOthersHarmed, ///< a record that the save does not replace is lost
    kNextSaves,    ///< the same save again succeeds
    kMended,       ///< and leaves nothing for `check` to name
    kColumns
};
constexpr char const* kTitles[kColumns] = {"cuts",        "by list",   "by check",
                                           "others lost", "next save", "mends all"};
using Row = std::array<uint64_t, kColumns>;

void add(Row& sum, Row const& row) { std::ranges::transform(sum, row, sum.begin(), std::plus<>()); }

struct Tally {
    uint64_t saves = 0;
    uint64_t savesWithBreak = 0; ///< a cut at some byte breaks the chain
    std::array<Row, kRemainsCount> rows{};
    std::vector<std::string> failures; ///< promises that were not kept

    void add(Tally const& other) {
        saves += other.saves;
        savesWithBreak += other.savesWithBreak;
        for (size_t i = 0; i < kRemainsCount; ++i)
            ::add(rows[i], other.rows[i]);
        failures.insert(failures.end(), other.failures.begin(), other.failures.end());
    }
};

// Cuts the power after every byte of a scene's save, looks at what is left each time, and mends it.
class CutSave {
public:
    explicit CutSave(uint32_t number) : m_number(number), m_scene(randomScene(number)) {
        FakeHeadboard board(m_scene.before);
        int32_t const status = store(HeadboardEepromCreate(board.camera()), m_scene.save);
        m_length = board.eeprom.bytesWritten();
        m_before = report(m_scene.before).records;
        m_after = report(board.device).records;
        expect(status == kEepromOk && holds(board.device, m_scene.save),
               "without a cut the save stores what it should", m_length);
    }

    Tally run() {
        bool breaks = false;
        for (uint64_t cut = 1; cut < m_length; ++cut)
            breaks = tryCut(cut) == Remains::BrokenChain || breaks;
        m_tally.saves = m_length > 1 ? 1 : 0;
        m_tally.savesWithBreak = breaks ? 1 : 0;
        return m_tally;
    }

private:
    void expect(bool isKept, char const* promise, uint64_t cut) {
        if (!isKept)
            m_tally.failures.push_back("scene " + std::to_string(m_number) + ", cut after byte " +
                                       std::to_string(cut) + ": not so: " + promise);
    }

    EepromContents contentsAfterCut(uint64_t cut) {
        FakeHeadboard board(m_scene.before);
        board.eeprom.plan({DeviceFault::PowerCut, cut, true});
        EepromShare const eeprom = HeadboardEepromCreate(board.camera());
        int32_t const status = store(eeprom, m_scene.save);
        expect(status < 0, "the save reports its failure", cut);
        expect(board.eeprom.bytesWritten() == cut, "the power fails at this byte", cut);
        EepromContents const left = board.device;
        // Only the headboard lost its power: the program still has the image, and in it what was not written.
        board.plan(DeviceFault::None);
        bool const isStored = store(eeprom, m_scene.save) == kEepromOk;
        expect(isStored && report(board.device).records == m_after,
               "the same program, asked to save again, stores everything", cut);
        return left;
    }

    Remains tryCut(uint64_t cut) {
        EepromContents const left = contentsAfterCut(cut);
        Report const told = report(left);
        Remains const remains = classify(told, m_before, m_after);
        expect(told.isTruthful, "list and check say what is left", cut);
        expect(remains != Remains::BrokenChain || (!told.listIsClean && !told.checkIsClean),
               "list and check name a broken chain", cut);
        expectPresence(left, cut);
        Row& row = m_tally.rows[size_t(remains)];
        add(row, {1, !told.listIsClean, !told.checkIsClean, harmsOthers(left, m_before, m_scene.save), 0, 0});
        saveAgain(left, cut, row);
        startAnew(left, cut);
        return remains;
    }

    // A board with a broken chain is not taken for a blank one, which would be formatted in silence.
    void expectPresence(EepromContents const& left, uint64_t cut) {
        FakeHeadboard board(left);
        EepromState const presence = probeEeprom(*HeadboardEepromCreate(board.camera()));
        expect(presence == EepromState::Present && board.eeprom.bytesWritten() == 0,
               "a test for presence leaves the board as it is", cut);
    }

    // The power is back, the program starts again, and somebody presses the same button.
    void saveAgain(EepromContents const& left, uint64_t cut, Row& row) {
        FakeHeadboard board(left);
        int32_t const status = store(HeadboardEepromCreate(board.camera()), m_scene.save);
        if (status != kEepromOk) {
            expect(board.eeprom.bytesWritten() == 0, "a save that fails on what is left writes nothing", cut);
            return;
        }
        Report const told = report(board.device);
        add(row, {0, 0, 0, 0, 1, told.checkIsClean});
        expect(told.isWhole, "a successful save leaves a whole chain", cut);
        expect(holds(board.device, m_scene.save), "what a successful save stored is found", cut);
    }

    void startAnew(EepromContents const& left, uint64_t cut) {
        FakeHeadboard board(left);
        EepromShare const eeprom = HeadboardEepromCreate(board.camera());
        bool const done = EepromFormat(*eeprom, -1) == kEepromOk && store(eeprom, m_scene.save) == kEepromOk;
        Report const told = report(board.device);
        expect(done && told.checkIsClean && told.records.size() == m_scene.save.size() &&
                   holds(board.device, m_scene.save),
               "a format mends everything", cut);
    }

    uint32_t m_number;
    Scene m_scene;
    uint64_t m_length = 0; ///< bytes that the uncut save writes
    Records m_before, m_after;
    Tally m_tally;
};

constexpr char const* kRemainsTexts[kRemainsCount] = {
    "all records as before the save", "all records as after it",  "broken chain",
    "damaged record, whole chain",    "records missing or twice", "a record nobody stored",
};

void print(char const* what, Row const& counts, uint64_t all) {
    std::printf("%-31s", what);
    for (uint64_t const count : counts)
        std::printf("%12llu", static_cast<unsigned long long>(count));
    std::printf("%10.2f %%\n", 100.0 * double(counts[kCuts]) / double(std::max<uint64_t>(all, 1)));
}

void print(Tally const& tally) {
    Row sum{};
    for (Row const& row : tally.rows)
        add(sum, row);
    auto const saves = static_cast<unsigned long long>(tally.saves);
    std::printf("%llu saves, %llu cuts\n\n%31s", saves, static_cast<unsigned long long>(sum[kCuts]), "");
    for (char const* const title : kTitles)
        std::printf("%12s", title);
    std::printf("%12s\n", "share");
    for (size_t i = 0; i < kRemainsCount; ++i)
        print(kRemainsTexts[i], tally.rows[i], sum[kCuts]);
    print("all", sum, sum[kCuts]);
    std::printf("%llu of %llu saves break the chain when the power fails at the wrong byte\n",
                static_cast<unsigned long long>(tally.savesWithBreak), saves);
    std::fflush(stdout);
}

constexpr size_t kMostFailuresShown = 20;

// The scenes of consecutive numbers, shared out among the cores.
Tally cutAll(uint32_t saves, uint32_t seed) {
    std::atomic<uint32_t> next = 0;
    std::mutex mutex;
    Tally sum;
    auto const work = [&] {
        for (uint32_t i = next++; i < saves; i = next++) {
            Tally const tally = CutSave(seed + i).run();
            std::lock_guard const lock(mutex);
            sum.add(tally);
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(std::thread::hardware_concurrency(), 1U); ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    return sum;
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
    Tally const tally = cutAll(saves, parser.value("seed").toUInt());
    print(tally);
    for (size_t i = 0; i < std::min(tally.failures.size(), kMostFailuresShown); ++i)
        std::fprintf(stderr, "%s\n", tally.failures[i].c_str());
    if (!tally.failures.empty())
        std::fprintf(stderr, "%zu promises were not kept\n", tally.failures.size());
    if (tally.saves < saves)
        std::fputs("fewer saves were tried than were asked for\n", stderr);
    return tally.failures.empty() && tally.saves >= saves ? 0 : 1;
}
