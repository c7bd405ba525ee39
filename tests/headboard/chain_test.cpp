#include "common/system.h"
#include "headboard/register_record.h"
#include "tests/headboard/headboard_fixture.h"

using namespace kestra;

namespace {
using Bytes = std::vector<uint8_t>;

struct Chain : ::testing::Test, Headboard {
    void format() { ASSERT_EQ(EepromFormat(*eeprom, -1), kEepromOk); }
    int32_t append(EepromRecord const& record) { return EepromAppendRecord(*eeprom, record); }
    int32_t find(uint8_t type, char const* name = nullptr, int32_t start = 0) {
        return EepromFindRecord(*eeprom, type, name, start);
    }
    int32_t end() { return find(kRecordEnd); }
};

TEST_F(Chain, BlankDeviceIsNotFormattedAndFormattingTakesSixBytes) {
    int32_t used = 7;
    EXPECT_EQ(EepromCheckHeader(*eeprom), kEepromNotFormatted);
    EXPECT_EQ(EepromFreeSpace(*eeprom, &used), 8171);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(find(kRecordPga), kEepromNotFormatted);
    EXPECT_EQ(append(recordOf(kRecordPga, Bytes(9))), kEepromNotFormatted);
    EXPECT_EQ(EepromNextRecord(*eeprom, 0), kEepromNotFormatted);
    format();
    EXPECT_EQ(EepromFreeSpace(*eeprom, &used), 8171);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(HeadboardEepromFlush(*eeprom), kEepromOk);
    EXPECT_EQ(Bytes(board.device.begin(), board.device.begin() + 6), (Bytes{'V', 'Y', 'E', 'E', 1, 0xFF}));
    EXPECT_EQ(board.timesWritten[6], 0);
    ASSERT_EQ(EepromFormat(*eeprom, 0x102), kEepromOk);
    EXPECT_EQ(eeprom->image[4], 2);
    board.deviceAddress = 0x50;
    HeadboardEepromRelease(*eeprom);
    EXPECT_EQ(EepromFreeSpace(*eeprom, &used), kEepromNoAnswer);
}

TEST_F(Chain, RoomForTheEndMarkerIsKept) {
    format();
    EXPECT_EQ(append(recordOf(kRecordCustomerData, Bytes(8168))), kEepromNoRoom);
    EXPECT_EQ(end(), 5);
    EXPECT_EQ(append(recordOf(kRecordCustomerData, Bytes(8167))), kEepromOk);
    int32_t used = 0;
    EXPECT_EQ(EepromFreeSpace(*eeprom, &used), 1);
    EXPECT_EQ(used, 8170);
    EXPECT_EQ(append(recordOf(kRecordCustomerData, {})), kEepromNoRoom);
    EXPECT_EQ(EepromDeleteRecord(*eeprom, 5), kEepromOk) << "the chain ends at the byte that is never loaded";
    EXPECT_EQ(end(), 5);
}

TEST_F(Chain, DeletingKeepsTheOtherRecordsByteForByte) {
    format();
    Bytes const unknown = bytesOf(recordOf(0x42, {1, 0xFF, 0, 8, 0x80})), opaque = {9, 8, 7};
    ASSERT_EQ(append(makeRegisterSet(kRecordPga, 8112, "one")), kEepromOk);
    ASSERT_EQ(append(recordOf(0x42, {1, 0xFF, 0, 8, 0x80})), kEepromOk);
    ASSERT_EQ(append(recordOf(kRecordDefectMap, opaque)), kEepromOk);
    ASSERT_EQ(HeadboardEepromFlush(*eeprom), kEepromOk);
    HeadboardEepromRelease(*eeprom);

    ASSERT_EQ(EepromDeleteNth(*eeprom, kRecordPga, "ONE", 0), kEepromOk);
    EXPECT_EQ(readRecord(eeprom, 5), unknown);
    EXPECT_EQ(find(kRecordDefectMap), 13);
    EXPECT_EQ(end(), 19);
    // Replacing moves a record to the end and takes no other.
    ASSERT_EQ(EepromReplaceRecord(*eeprom, recordOf(0x42, {5})), kEepromOk);
    ASSERT_EQ(EepromReplaceRecord(*eeprom, makeRegisterSet(kRecordPga, 8112, nullptr)), kEepromOk);
    ASSERT_EQ(EepromReplaceRecord(*eeprom, makeRegisterSet(kRecordPga, 8112, "default")), kEepromOk);
    ASSERT_EQ(EepromReplaceRecord(*eeprom, makeRegisterSet(kRecordPga, 8112, "")), kEepromOk);
    EXPECT_EQ(readRecord(eeprom, 5), bytesOf(recordOf(kRecordDefectMap, opaque)));
    EXPECT_EQ(readRecord(eeprom, 11), bytesOf(recordOf(0x42, {5})));
    EXPECT_EQ(EepromRecordText(*eeprom, 15), "default");
    EXPECT_EQ(EepromRecordText(*eeprom, 27), "");
    EXPECT_EQ(end(), 39);
}

TEST_F(Chain, NamesAreCutToEightAndFoundWithoutCase) {
    format();
    ASSERT_EQ(append(makeRegisterSet(kRecordPga, 8112, "KestraTune")), kEepromOk);
    ASSERT_EQ(append(recordOf(kRecordPga, {'N', 'i', 'n', 'e', 'C', 'h', 'a', 'r', 's', 2, 0, 0})),
              kEepromOk);
    ASSERT_EQ(append(recordOf(kRecordSwCcm, {'A', 0})), kEepromOk); // shorter than a name's field
    ASSERT_EQ(append(recordOf(kRecordScratchpad, Bytes(15, 'x'))), kEepromOk);
    ASSERT_EQ(HeadboardEepromFlush(*eeprom), kEepromOk);
    HeadboardEepromRelease(*eeprom); // so that short names bring in a part of what follows
    board.timesRead.assign(board.timesRead.size(), 0);
    EXPECT_EQ(find(kRecordPga, "kestratu"), 5);
    EXPECT_EQ(find(kRecordPga, "KestraTune"), kEepromNoRecord);
    EXPECT_EQ(find(kRecordPga, "ninechars"), 17);
    EXPECT_EQ(find(kRecordSwCcm, "a"), 32);
    EXPECT_EQ(find(kRecordScratchpad, "xxxxxxxxxxxxxxx"), 37);
    EXPECT_EQ(end(), 55);
    for (int const timesRead : board.timesRead)
        EXPECT_LE(timesRead, 1);
}

TEST_F(Chain, SearchIncludesItsStartAndTheHeaderIsARecord) {
    format();
    for (uint8_t i = 0; i < 3; ++i)
        ASSERT_EQ(append(recordOf(kRecordHeadboardId, {uint8_t('a' + i), 0})), kEepromOk);
    EXPECT_EQ(find(kRecordIdent), 0);
    EXPECT_EQ(find(kRecordHeadboardId, "any", 10), 10);
    EXPECT_EQ(find(kRecordHeadboardId, nullptr, 11), kEepromNoRecord) << "11 is not where a record begins";
    EXPECT_EQ(find(kRecordLensType), kEepromNoRecord);
    EXPECT_EQ(find(kRecordPga, nullptr, kEepromNoAnswer), kEepromNoAnswer);
    EXPECT_EQ(EepromNextRecord(*eeprom, 0), 5);
    EXPECT_EQ(EepromNextRecord(*eeprom, 15), 20);
    EXPECT_EQ(EepromNextRecord(*eeprom, 20), kEepromNoRecord);
    EXPECT_EQ(EepromNextRecord(*eeprom, kEepromFailed), kEepromFailed);

    Bytes buffer(5);
    EXPECT_EQ(EepromReadNth(*eeprom, kRecordHeadboardId, nullptr, INT32_MAX, buffer), 5);
    EXPECT_EQ(buffer[3], 'a') << "every n of a type is its first record";
    EXPECT_EQ(EepromReadNth(*eeprom, kAnyRecordType, nullptr, 2, buffer), 5);
    EXPECT_EQ(buffer[3], 'c');
    EXPECT_EQ(EepromReadNth(*eeprom, kAnyRecordType, nullptr, INT32_MAX, buffer), kEepromNoRecord);
    EXPECT_EQ(EepromReadRecord(*eeprom, 0, buffer), 5);
    EXPECT_EQ(buffer[0], 'V');
    EXPECT_EQ(EepromReadRecord(*eeprom, 5, std::span(buffer).first(4)), kEepromBufferTooSmall);
    EXPECT_EQ(EepromReadRecord(*eeprom, 5, {}), 5);
    for (int32_t const outside : {3, 8176, INT32_MAX})
        EXPECT_EQ(EepromReadRecord(*eeprom, outside, buffer), kEepromFailed);
    for (int32_t const noRecord : {-4, 0, 4, 20, 8176})
        EXPECT_EQ(EepromDeleteRecord(*eeprom, noRecord), kEepromFailed);
    EXPECT_EQ(EepromDeleteNth(*eeprom, kRecordLensType, nullptr, 0), kEepromNoRecord);
    EXPECT_EQ(end(), 20);
}

TEST_F(Chain, TextIsBoundedByItsRecord) {
    format();
    ASSERT_EQ(append(recordOf(kRecordHeadboardId, {'n', 'o', ' ', 'e', 'n', 'd'})), kEepromOk);
    ASSERT_EQ(append(recordOf(kRecordLensType, {'L', 0, 'x'})), kEepromOk);
    ASSERT_EQ(append(recordOf(kRecordDefectMap, {'D', 0})), kEepromOk);
    currentUtcTime.replace([] { return QDateTime({2024, 5, 31}, {23, 59, 7}, Qt::UTC); });
    ASSERT_EQ(EepromReplaceRecord(*eeprom, makeTimeStamp()), kEepromOk);
    currentUtcTime.replace({});
    EXPECT_EQ(EepromRecordText(*eeprom, 5), "no end");
    EXPECT_EQ(EepromRecordText(*eeprom, 14), "L");
    EXPECT_EQ(EepromRecordText(*eeprom, 20).data(), nullptr);
    EXPECT_EQ(EepromRecordText(*eeprom, 25), "2024/05/31 23:59:07");
    EXPECT_EQ(EepromReadRecord(*eeprom, 25, {}), 3 + 20);
    for (int32_t const noRecord : {-1, 0, 48, 8175, 8176})
        EXPECT_EQ(EepromRecordText(*eeprom, noRecord).data(), nullptr) << noRecord;
}
} // namespace
