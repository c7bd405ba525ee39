#include "headboard/record_format.h"
#include "tests/headboard/headboard_fixture.h"

#include <algorithm>
#include <numeric>

using namespace kestra;

namespace {

using Bytes = std::vector<uint8_t>;

// Callers take what is below 0 for a failure, and what is not for an offset or a size.
static_assert(kEepromOk == 0 && std::max({kEepromFailed, kEepromNotFormatted, kEepromNoRoom, kEepromNoRecord,
                                          kEepromNoAnswer, kEepromBufferTooSmall, kEepromMismatch}) < 0);

TEST(Range, ReadAndWriteOfTheDeviceUseTheCallersBufferAndTheImageAlike) {
    Headboard h;
    std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
    Bytes read(4);
    ASSERT_EQ(HeadboardEepromDeviceRead(h.eeprom, 3, 4, read.data()), kEepromOk);
    EXPECT_EQ(read, (Bytes{4, 5, 6, 7}));
    EXPECT_EQ(Bytes(h.eeprom->image.begin() + 3, h.eeprom->image.begin() + 7), read);
    // Whatever the state: what was read once is read again.
    h.board.device[3] = 99;
    ASSERT_EQ(HeadboardEepromDeviceRead(h.eeprom, 3, 1, read.data()), kEepromOk);
    EXPECT_EQ(read[0], 99);
    Bytes const other = {0x21, 0x22};
    ASSERT_EQ(HeadboardEepromDeviceWrite(h.eeprom, 8174, 2, other.data()), kEepromOk);
    EXPECT_EQ(Bytes(h.board.device.begin() + 8174, h.board.device.begin() + 8176), other);
    EXPECT_EQ(h.eeprom->image[8175], 0x22);
    EXPECT_EQ(h.eeprom->state[8175], ByteState::Current);
    EXPECT_EQ(HeadboardEepromDeviceRead(h.eeprom, 8176, 0), kEepromOk);
    EXPECT_EQ(HeadboardEepromDeviceRead(h.eeprom, 8177, 0), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceRead(h.eeprom, -1, 1), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceRead(h.eeprom, 0, -1), kEepromFailed);
}

TEST(Range, NothingFollowsARecordThatLeadsOutOfTheStore) {
    Headboard h;
    Bytes image(8176, 0xFF);
    std::copy_n("VYEE\1", 5, image.begin());
    for (uint32_t const length : {8167U, 8168U, 8169U, 0xFFFFU}) {
        image[5] = kRecordCustomerData;
        putU16Be(image, 6, length);
        h.setImage(image);
        bool const fits = length < 8168;
        int32_t const end = 8 + int32_t(length);
        EXPECT_EQ(EepromNextRecord(h.eeprom, 0), 5);
        EXPECT_EQ(EepromNextRecord(h.eeprom, 5), fits ? end : kEepromNoRecord) << length;
        EXPECT_EQ(EepromReadRecord(h.eeprom, 5, {}), fits ? end - 5 : kEepromFailed) << length;
        EXPECT_EQ(EepromFindRecord(h.eeprom, kRecordEnd, nullptr, 0), fits ? end : kEepromNoRecord) << length;
        EXPECT_EQ(EepromDeleteRecord(h.eeprom, 5), fits ? kEepromOk : kEepromFailed) << length;
    }
    // Old bytes behind the end mark are no length.
    image[5] = kRecordEnd;
    putU16Be(image, 6, 4);
    h.setImage(image);
    EXPECT_EQ(EepromNextRecord(h.eeprom, 5), kEepromNoRecord);
    EXPECT_EQ(EepromDeleteRecord(h.eeprom, 5), kEepromFailed);
    EXPECT_EQ(h.eeprom->image, image);
}

TEST(Range, ARecordGrowsToWhatItsLengthCanTellAndNoFurther) {
    EepromRecord record = EepromNewRecord(kRecordCustomerData, 0x10000, 0xFFFE);
    Bytes const one = {7};
    EXPECT_TRUE(record.append(one));
    EXPECT_EQ(record.length(), 0xFFFF);
    EXPECT_FALSE(record.append(one));
    EXPECT_EQ(getU16Be(record.bytes(), 1), 0xFFFFU);
}

TEST(Range, CaseIsThatOfLettersAToZOnly) {
    EXPECT_TRUE(equalWithoutCase("AZaz", "azAZ"));
    EXPECT_FALSE(equalWithoutCase("@[", "`{"));
}

} // namespace
