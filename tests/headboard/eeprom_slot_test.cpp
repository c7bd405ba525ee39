#include "headboard/eeprom_slot.h"

#include "tests/headboard/headboard_fixture.h"

namespace {

struct Slot : ::testing::Test, Headboard {
    ~Slot() override { discardEeprom(slot); }
    EepromSlot slot = nullptr;
};

TEST_F(Slot, AllUsersShareOneEepromUntilItIsRenewed) {
    HeadboardEeprom const first = sharedEeprom(slot, fake.camera());
    EXPECT_TRUE(isSharedEeprom(slot, first));
    EXPECT_TRUE(isSharedEeprom(slot, sharedEeprom(slot, nullptr)));
    EXPECT_FALSE(isSharedEeprom(slot, eeprom));
    ASSERT_EQ(EepromFormat(first, -1), kEepromOk);
    HeadboardEeprom const second = renewEeprom(slot, fake.camera());
    EXPECT_TRUE(first->image.empty()) << "what was not written is dropped";
    EXPECT_FALSE(isSharedEeprom(slot, first));
    EXPECT_TRUE(isSharedEeprom(slot, second));
    discardEeprom(slot);
    EXPECT_FALSE(isSharedEeprom(slot, second));
    discardEeprom(slot);
    EXPECT_EQ(slot, nullptr);
}

} // namespace
