#include "tests/headboard/headboard_fixture.h"
#include "tests/support/least_transfers.h"

#include <algorithm>
#include <random>

using namespace kestra;

namespace {
using std::chrono::milliseconds;

// Counts the transfers of an operation and the virtual time that it takes.
struct CountedBoard : Headboard {
    explicit CountedBoard(Path way) : Headboard(way), path(way) {}

    // Moves the bytes of a state by the fewest transfers, each of which takes so many milliseconds.
    template <typename Operation>
    void move(ByteState moved, size_t begin, size_t end, Transfer raw, int msEach, Operation operation) {
        int64_t const transfers =
            leastTransfers(eeprom->state, moved, begin, end, path == Path::Raw ? raw : Transfer::Pair);
        // Behind the last write by description nobody waits for the device.
        bool const isLastFree = path == Path::BusDescription && transfers > 0;
        int64_t const before = board.operations;
        auto const start = board.clock.now();
        EXPECT_EQ(operation(), kEepromOk);
        EXPECT_EQ(board.operations - before, transfers) << int(path);
        EXPECT_EQ(board.clock.now() - start, milliseconds(msEach * (transfers - isLastFree))) << int(path);
    }
    // The bridge is asked every 2 ms; a raw read waits for nobody, and the library for the device alone.
    [[nodiscard]] int msEachRead() const { return path == Path::Bridge ? 2 : 0; }

    void load(int32_t offset, int32_t count) {
        HeadboardEepromEnsureImage(*eeprom);
        move(ByteState::NotRead, size_t(offset), size_t(offset) + size_t(count), Transfer::RawRead,
             msEachRead(), [&] { return HeadboardEepromLoad(*eeprom, offset, count); });
    }
    void save() {
        move(ByteState::Changed, 0, eeprom->state.size(), Transfer::RawWrite, 20,
             [&] { return HeadboardEepromFlush(*eeprom); });
        board.clock.advance(milliseconds(20));
    }
    void verify() {
        move(ByteState::Current, 0, eeprom->state.size(), Transfer::RawRead, msEachRead(),
             [&] { return HeadboardEepromVerify(*eeprom, 0, -1); });
    }

    Path path;
};

TEST(Transfers, LoadSaveAndVerifyTakeNoneThatTheirBytesDoNotNeed) {
    for (Path const path : kPaths) {
        CountedBoard h(path);
        std::mt19937 random(11);
        auto const below = [&](int32_t n) { return int32_t(random() % uint32_t(n)); };
        // Pairs at odd addresses would wrap at the end of a page, and the bridge cuts the first byte of a
        // pair.
        int32_t const evenForPairs = path == Path::Raw ? ~0 : ~1;
        std::vector<uint8_t> const bytes(64, 0);
        for (int i = 0; i < 60; ++i) {
            h.load(below(2000), 1 + below(40));
            ASSERT_EQ(HeadboardEepromPut(*h.eeprom, below(2000) & evenForPairs, 1 + below(15), bytes.data()),
                      kEepromOk);
            if (i % 20 == 19)
                h.save();
        }
        h.load(0, 2100);
        h.save(); // has nothing to do
        EXPECT_EQ(*std::max_element(h.board.timesRead.begin(), h.board.timesRead.end()), 1) << int(path);
        h.verify();
    }
}

simulator::EepromContents deviceWithRecords() {
    Headboard h;
    EXPECT_EQ(EepromFormat(*h.eeprom, -1), kEepromOk);
    for (EepromRecord const& record :
         {makeRegisterSet(kRecordPga, 8112, "one"), recordOf(kRecordDefectMap, std::vector<uint8_t>(301, 7)),
          makeRegisterSet(kRecordPga, 8112, "two"), recordOf(kRecordScratchpad, {'h', 'i', 0})})
        EXPECT_EQ(EepromAppendRecord(*h.eeprom, record), kEepromOk);
    EXPECT_EQ(HeadboardEepromFlush(*h.eeprom), kEepromOk);
    return h.board.device;
}

TEST(Transfers, RecordsThatAreSearchedReadAndReplacedTravelOnce) {
    simulator::EepromContents const device = deviceWithRecords();
    for (Path const path : kPaths) {
        CountedBoard h(path);
        h.board.device = device;
        int32_t const second = EepromFindRecord(*h.eeprom, kRecordPga, "TWO", 0);
        ASSERT_GT(second, 0);
        EXPECT_FALSE(readRecord(h.eeprom, second).empty());
        EXPECT_EQ(EepromRecordText(*h.eeprom, second), "two");
        ASSERT_EQ(EepromReplaceRecord(*h.eeprom, makeRegisterSet(kRecordPga, 8112, "one")), kEepromOk);
        EXPECT_GT(EepromFreeSpace(*h.eeprom), 0);
        h.save();
        h.load(0, 8176);
        auto const& read = h.board.timesRead;
        auto const& written = h.board.timesWritten;
        EXPECT_EQ(*std::max_element(read.begin(), read.end()), 1) << int(path);
        EXPECT_EQ(*std::max_element(written.begin(), written.end()), 1) << int(path);
    }
}
} // namespace
