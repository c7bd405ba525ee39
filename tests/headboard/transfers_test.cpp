#include "tests/headboard/headboard_fixture.h"
#include "tests/support/least_transfers.h"

#include <algorithm>
#include <random>

using namespace kestra;

namespace {
TEST(Transfers, LoadSaveAndVerifyTakeNoneThatTheirBytesDoNotNeed) {
    for (Path const path : {Path::Raw, Path::Bridge, Path::BusDescription}) {
        Headboard h(path);
        // Moves the bytes of a state by the fewest transfers.
        auto const move = [&](ByteState moved, int32_t begin, int32_t count, Transfer raw, auto operation) {
            Transfer const transfer = path == Path::Raw ? raw : Transfer::Pair;
            int64_t const least = leastTransfers(h.eeprom->state, moved, size_t(begin),
                                                 size_t(begin) + size_t(count), transfer);
            int64_t const before = h.board.operations;
            EXPECT_EQ(operation(), kEepromOk);
            EXPECT_EQ(h.board.operations - before, least) << int(path);
        };
        auto const load = [&](int32_t offset, int32_t count) {
            HeadboardEepromEnsureImage(*h.eeprom);
            move(ByteState::NotRead, offset, count, Transfer::RawRead, [&] { return h.load(offset, count); });
        };
        auto const save = [&] {
            move(ByteState::Changed, 0, 8176, Transfer::RawWrite, [&] { return h.flush(); });
            h.board.clock.advance(std::chrono::milliseconds(20));
        };
        std::mt19937 random(11);
        auto const below = [&](uint32_t n) { return int32_t(random() % n); };
        // Pairs at odd addresses would wrap at the end of a page, and the bridge cuts the first byte of one.
        int32_t const evenForPairs = path == Path::Raw ? ~0 : ~1;
        for (int i = 0; i < 60; ++i) {
            load(below(2000), 1 + below(40));
            ASSERT_EQ(h.put(below(2000) & evenForPairs, Bytes(size_t(1 + below(15)))), kEepromOk);
            if (i % 20 == 19)
                save();
        }
        load(0, 2100);
        save(); // has nothing to do
        EXPECT_EQ(std::ranges::max(h.board.timesRead), 1) << int(path);
        move(ByteState::Current, 0, 8176, Transfer::RawRead, [&] { return h.verify(); });
    }
}
} // namespace
