#include "tests/headboard/headboard_fixture.h"

using namespace kestra;

namespace {
struct Slot : ::testing::Test, Headboard {
    ~Slot() override { discardEeprom(slot); }
    EepromSlot slot = nullptr;
};

TEST_F(Slot, AllUsersShareOneEepromUntilItIsRenewed) {
    EepromShare const first = sharedEeprom(slot, fake.camera());
    EXPECT_EQ(slot, first.data());
    EXPECT_EQ(slot, sharedEeprom(slot, nullptr).data());
    ASSERT_EQ(EepromFormat(*first, -1), kEepromOk);
    EepromUse use(slot);
    HeadboardEeprom& second = use.renew(fake.camera());
    EXPECT_TRUE(first->image.empty()) << "what was not written is dropped";
    EXPECT_NE(slot, first.data());
    EXPECT_EQ(slot, &second);
    discardEeprom(slot);
    EXPECT_EQ(slot, nullptr);
    discardEeprom(slot);
}

// The host may delete a page inside any transfer of its save.
TEST_F(Slot, APageThatIsGoneReachesTheDeviceOnlyToEndAFlush) {
    Bytes const bytes = {1, 2, 3, 4};
    EepromUse use(slot);
    HeadboardEeprom& taken = use.take(fake.camera());
    ASSERT_EQ(HeadboardEepromPut(taken, 0, 4, bytes.data()), kEepromOk);
    host.onCall = [&](std::string const& call) {
        if (call.starts_with("writeBus"))
            use.abandon();
    };
    EXPECT_EQ(HeadboardEepromFlush(taken), kEepromOk);
    host.onCall = nullptr;
    EXPECT_EQ(onDevice(0, 4), bytes);
    EXPECT_EQ(slot, nullptr) << "the next user gets another one";
    auto const operations = board.operations;
    EXPECT_EQ(HeadboardEepromLoad(taken, 100, 1), kEepromFailed);
    EXPECT_EQ(HeadboardEepromLoad(use.take(fake.camera()), 0, 1), kEepromFailed);
    EXPECT_EQ(board.operations, operations);
    EXPECT_EQ(slot, nullptr) << "and none without a camera is left";
    EepromShare const others = sharedEeprom(slot, fake.camera());
    ASSERT_EQ(HeadboardEepromPut(*others, 0, 4, bytes.data()), kEepromOk);
    use.flush();
    EXPECT_TRUE(HeadboardEepromHasChanges(*others)) << "what waits in another user's image stays";
}

TEST_F(Slot, ProbeFormatsABlankDeviceAndTellsSilenceFromFailure) {
    for (int64_t const operations : {4, 0}) { // a formatted one is left alone
        board.operations = 0;
        EXPECT_EQ(probeEeprom(*eeprom), EepromState::Present);
        EXPECT_EQ(board.operations, operations);
        EXPECT_EQ(onDevice(0, 6), (Bytes{'V', 'Y', 'E', 'E', 1, 0xFF}));
    }
    using enum DeviceFault;
    for (auto const& [isFormatted, fault, presence] : {std::tuple(true, NoAcknowledge, EepromState::Absent),
                                                       {true, TransportFailed, EepromState::Unknown},
                                                       {false, NoAcknowledge, EepromState::Absent},
                                                       {false, TransportFailed, EepromState::Absent}}) {
        HeadboardEepromRelease(*eeprom);
        board.device[0] = isFormatted ? 'V' : 0xFF;
        // A read comes first: of a blank device it succeeds, and the write of the header meets the fault.
        board.plan(fault, isFormatted ? 0 : 1);
        EXPECT_EQ(probeEeprom(*eeprom), presence) << isFormatted << int(fault);
    }
}
} // namespace
