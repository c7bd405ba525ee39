#include "tests/headboard/headboard_fixture.h"

#include <memory>

using namespace kestra;

namespace {

// A direct call on the process-wide object, without a copy of the caller's.
TEST(Reentry, OperationHoldsAShareOfItsOwn) {
    Headboard h;
    ASSERT_EQ(EepromFormat(h.eeprom, -1), kEepromOk);
    ASSERT_EQ(EepromAppendRecord(h.eeprom, makeRegisterSet(kRecordPga, 8112, "first")), kEepromOk);
    ASSERT_EQ(EepromAppendRecord(h.eeprom, makeRegisterSet(kRecordPga, 8112, "second")), kEepromOk);
    ASSERT_EQ(HeadboardEepromFlush(h.eeprom), kEepromOk);
    HeadboardEepromRelease(h.eeprom);
    auto processWide = std::make_unique<HeadboardEeprom>(std::exchange(h.eeprom, {}));
    h.host.onCall = [&](std::string const&) { processWide.reset(); };
    EXPECT_EQ(EepromFindRecord(*processWide, kRecordPga, "second", 0), 17);
    EXPECT_EQ(processWide, nullptr);
}

TEST(Reentry, ByteChangedDuringItsWriteStaysChanged) {
    Headboard h;
    uint8_t const first[] = {1, 2}, second[] = {3};
    ASSERT_EQ(HeadboardEepromPut(h.eeprom, 0, 2, first), kEepromOk);
    h.host.onCall = [&](std::string const& call) {
        if (call.starts_with("writeBus")) {
            EXPECT_EQ(HeadboardEepromPut(h.eeprom, 1, 1, second), kEepromOk);
        }
    };
    EXPECT_EQ(HeadboardEepromFlush(h.eeprom), kEepromOk);
    h.host.onCall = nullptr;
    EXPECT_EQ(h.eeprom->state[0], ByteState::Current);
    EXPECT_EQ(h.eeprom->state[1], ByteState::Changed);
    EXPECT_EQ(HeadboardEepromFlush(h.eeprom), kEepromOk);
    EXPECT_EQ(h.board.device[1], 3);
}

} // namespace
