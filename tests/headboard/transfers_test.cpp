#include "tests/headboard/headboard_fixture.h"
#include "tests/support/least_transfers.h"

#include <algorithm>
#include <random>

using namespace kestra;

namespace {
// Counts the transfers of each operation.
struct CountedBoard : Headboard {
    explicit CountedBoard(Path way) : Headboard(way), path(way) {}

    // Moves the bytes of a state by the fewest transfers.
    template <typename Operation>
    void move(ByteState moved, size_t begin, size_t end, Transfer raw, Operation operation) {
        int64_t const least =
            leastTransfers(eeprom->state, moved, begin, end, path == Path::Raw ? raw : Transfer::Pair);
        int64_t const before = board.operations;
        EXPECT_EQ(operation(), kEepromOk);
        EXPECT_EQ(board.operations - before, least) << int(path);
    }
    void load(int32_t offset, int32_t count) {
        HeadboardEepromEnsureImage(*eeprom);
        move(ByteState::NotRead, size_t(offset), size_t(offset) + size_t(count), Transfer::RawRead,
             [&] { return Headboard::load(offset, count); });
    }
    void save() {
        move(ByteState::Changed, 0, eeprom->state.size(), Transfer::RawWrite, [&] { return flush(); });
        board.clock.advance(std::chrono::milliseconds(20));
    }

    Path path;
};

TEST(Transfers, LoadSaveAndVerifyTakeNoneThatTheirBytesDoNotNeed) {
    for (Path const path : {Path::Raw, Path::Bridge, Path::BusDescription}) {
        CountedBoard h(path);
        std::mt19937 random(11);
        auto const below = [&](uint32_t n) { return int32_t(random() % n); };
        // Pairs at odd addresses would wrap at the end of a page, and the bridge cuts the first byte of one.
        int32_t const evenForPairs = path == Path::Raw ? ~0 : ~1;
        for (int i = 0; i < 60; ++i) {
            h.load(below(2000), 1 + below(40));
            ASSERT_EQ(h.put(below(2000) & evenForPairs, Bytes(size_t(1 + below(15)))), kEepromOk);
            if (i % 20 == 19)
                h.save();
        }
        h.load(0, 2100);
        h.save(); // has nothing to do
        EXPECT_EQ(std::ranges::max(h.board.timesRead), 1) << int(path);
        h.move(ByteState::Current, 0, 8176, Transfer::RawRead, [&] { return h.verify(); });
    }
}
} // namespace
