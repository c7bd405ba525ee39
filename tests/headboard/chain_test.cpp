#include "tests/headboard/headboard_fixture.h"

#include <algorithm>

using namespace kestra;

// Callers take what is below 0 for a failure, and what is not for an offset or a size.
static_assert(kEepromOk == 0 && std::max({kEepromFailed, kEepromNotFormatted, kEepromNoRoom, kEepromNoRecord,
                                          kEepromNoAnswer, kEepromBufferTooSmall, kEepromMismatch}) < 0);

namespace {
struct Chain : ::testing::Test, Headboard {
    // Writes a chain of these records and forgets what it holds.
    void store(std::vector<EepromRecord> const& records) {
        format();
        for (EepromRecord const& record : records)
            ASSERT_EQ(append(record), kEepromOk);
        ASSERT_EQ(flush(), kEepromOk);
        HeadboardEepromRelease(*eeprom);
    }
    void expectChain(std::vector<EepromRecord> const& records) {
        int32_t at = 5;
        for (EepromRecord const& expected : records) {
            EXPECT_TRUE(std::ranges::equal(record(at), expected.bytes())) << "at " << at;
            at += int32_t(expected.bytes().size());
        }
        EXPECT_EQ(end(), at);
    }
    // Free bytes and used ones.
    std::pair<int32_t, int32_t> space() {
        int32_t used = 7;
        int32_t const free = EepromFreeSpace(*eeprom, &used);
        return {free, used};
    }
};

TEST_F(Chain, BlankDeviceIsNotFormattedAndFormattingTakesSixBytes) {
    EXPECT_EQ(EepromCheckHeader(*eeprom), kEepromNotFormatted);
    EXPECT_EQ(space(), std::pair(8171, 0));
    EXPECT_EQ(find(kRecordPga), kEepromNotFormatted);
    EXPECT_EQ(append(recordOf(kRecordPga, Bytes(9))), kEepromNotFormatted);
    EXPECT_EQ(EepromNextRecord(*eeprom, 0), kEepromNotFormatted);
    format();
    EXPECT_EQ(space(), std::pair(8171, 0));
    EXPECT_EQ(flush(), kEepromOk);
    EXPECT_EQ(onDevice(0, 6), (Bytes{'V', 'Y', 'E', 'E', 1, 0xFF}));
    EXPECT_EQ(board.eeprom.bytesWritten(), 6U);
    ASSERT_EQ(EepromFormat(*eeprom, 0x102), kEepromOk);
    EXPECT_EQ(eeprom->image[4], 2);
    board.deviceAddress = 0x50;
    HeadboardEepromRelease(*eeprom);
    EXPECT_EQ(space(), std::pair(int32_t{kEepromNoAnswer}, 0));
}

TEST_F(Chain, RoomForTheEndMarkerIsKept) {
    format();
    EXPECT_EQ(append(recordOf(kRecordCustomerData, Bytes(8168))), kEepromNoRoom);
    expectChain({});
    EXPECT_EQ(append(recordOf(kRecordCustomerData, Bytes(8167))), kEepromOk);
    EXPECT_EQ(space(), std::pair(1, 8170));
    EXPECT_EQ(append(recordOf(kRecordCustomerData, {})), kEepromNoRoom);
    EXPECT_EQ(EepromDeleteRecord(*eeprom, 5), kEepromOk) << "the chain ends at the byte that is never loaded";
    expectChain({});
}

TEST_F(Chain, DeletingAndReplacingKeepTheOtherRecordsByteForByte) {
    EepromRecord const unknown = recordOf(0x42, {1, 0xFF, 0, 8, 0x80}), newer = recordOf(0x42, {5}),
                       opaque = recordOf(kRecordDefectMap, {9, 8, 7});
    store({registerSet("one"), unknown, opaque});
    ASSERT_EQ(EepromDeleteNth(*eeprom, kRecordPga, "ONE", 0), kEepromOk);
    expectChain({unknown, opaque});
    for (EepromRecord const& record : {newer, registerSet(nullptr), registerSet("default"), registerSet("")})
        ASSERT_EQ(EepromReplaceRecord(*eeprom, record), kEepromOk);
    expectChain({opaque, newer, registerSet("default"), registerSet("")});
}

TEST_F(Chain, NamesAreCutToEightAndFoundWithoutCase) {
    store({registerSet("KestraTune"),
           recordOf(kRecordPga, {'N', 'i', 'n', 'e', 'C', 'h', 'a', 'r', 's', 2, 0, 0}),
           recordOf(kRecordSwCcm, {'A', 0}), // shorter than a name's field, which brings in what follows
           recordOf(kRecordScratchpad, Bytes(15, 'x'))});
    board.timesRead.assign(board.timesRead.size(), 0);
    EXPECT_EQ(find(kRecordPga, "kestratu"), 5);
    EXPECT_EQ(find(kRecordPga, "KestraTune"), kEepromNoRecord);
    EXPECT_EQ(find(kRecordPga, "ninechars"), 17);
    EXPECT_EQ(find(kRecordSwCcm, "a"), 32);
    EXPECT_EQ(find(kRecordScratchpad, "xxxxxxxxxxxxxxx"), 37);
    EXPECT_EQ(end(), 55);
    EXPECT_EQ(std::ranges::max(board.timesRead), 1);
    EXPECT_TRUE(equalWithoutCase("AZaz", "azAZ"));
    EXPECT_FALSE(equalWithoutCase("@[", "`{")) << "beside the letters";
}

TEST_F(Chain, SearchIncludesItsStartAndTheHeaderIsARecord) {
    store({recordOf(kRecordHeadboardId, {'a', 0}), recordOf(kRecordDefectMap, {'b', 0}),
           recordOf(kRecordHeadboardId, {'c'})});
    EXPECT_EQ(find(kRecordIdent), 0);
    EXPECT_EQ(find(kRecordHeadboardId, "any", 15), 15);
    EXPECT_EQ(find(kRecordHeadboardId, nullptr, 16), kEepromNoRecord) << "where no record begins";
    EXPECT_EQ(find(kRecordPga, nullptr, kEepromNoAnswer), kEepromNoAnswer);
    EXPECT_EQ(EepromNextRecord(*eeprom, 15), 19);
    EXPECT_EQ(EepromNextRecord(*eeprom, 19), kEepromNoRecord);
    EXPECT_EQ(EepromNextRecord(*eeprom, kEepromFailed), kEepromFailed);

    Bytes buffer(5);
    EXPECT_EQ(EepromReadNth(*eeprom, kRecordHeadboardId, nullptr, INT32_MAX, buffer), 5);
    EXPECT_EQ(buffer[3], 'a') << "every n of a type is its first record";
    EXPECT_EQ(EepromReadNth(*eeprom, kAnyRecordType, nullptr, 2, buffer), 4);
    EXPECT_EQ(buffer[3], 'c');
    EXPECT_EQ(EepromReadNth(*eeprom, kAnyRecordType, nullptr, INT32_MAX, buffer), kEepromNoRecord);
    EXPECT_EQ(record(0), (Bytes{'V', 'Y', 'E', 'E', 1}));
    EXPECT_EQ(EepromReadRecord(*eeprom, 5, std::span(buffer).first(4)), kEepromBufferTooSmall);
    EXPECT_EQ(EepromReadRecord(*eeprom, 1, buffer), kEepromFailed);
    EXPECT_EQ(EepromRecordText(*eeprom, 15), "c") << "bounded by its record";
    for (int32_t const noRecord : {-4, 0, 4, 10, 19, 8176})
        EXPECT_EQ(EepromRecordText(*eeprom, noRecord).data(), nullptr) << noRecord;
    for (int32_t const noRecord : {-4, 0, 4, 19, 8176})
        EXPECT_EQ(EepromDeleteRecord(*eeprom, noRecord), kEepromFailed) << noRecord;
    EXPECT_EQ(end(), 19);
}

TEST_F(Chain, NothingFollowsARecordThatLeadsOutOfTheStore) {
    eeprom->image.assign(8176, 0xFF);
    eeprom->state.assign(8176, ByteState::Current); // so that nothing asks the device
    std::ranges::copy(Bytes{'V', 'Y', 'E', 'E', 1, kRecordCustomerData}, eeprom->image.begin());
    Bytes const image = eeprom->image;
    for (uint32_t const length : {8167U, 8168U, 0xFFFFU}) {
        eeprom->image = image;
        putU16Be(eeprom->image, 6, length);
        bool const fits = length < 8168;
        int32_t const behind = fits ? 8 + int32_t(length) : kEepromNoRecord;
        EXPECT_EQ(EepromNextRecord(*eeprom, 5), behind) << length;
        EXPECT_EQ(EepromReadRecord(*eeprom, 5, {}), fits ? behind - 5 : kEepromFailed) << length;
        EXPECT_EQ(end(), behind) << length;
        EXPECT_EQ(EepromDeleteRecord(*eeprom, 5), fits ? kEepromOk : kEepromFailed) << length;
    }
    // Old bytes behind the end mark are no length.
    eeprom->image[5] = kRecordEnd;
    putU16Be(eeprom->image, 6, 4);
    Bytes const ended = eeprom->image;
    EXPECT_EQ(EepromNextRecord(*eeprom, 5), kEepromNoRecord);
    EXPECT_EQ(EepromDeleteRecord(*eeprom, 5), kEepromFailed);
    EXPECT_EQ(eeprom->image, ended);
}
} // namespace
