#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tests/headboard/headboard_fixture.h"

using namespace kestra;

namespace {
constexpr size_t kImageSize = 8192;

EepromShare eepromOf(std::vector<uint8_t> const& image) {
    EepromShare eeprom = HeadboardEepromCreate(nullptr);
    eeprom->deviceSize = int32_t(image.size());
    eeprom->image = image;
    eeprom->state.assign(image.size(), ByteState::Current);
    return eeprom;
}

// Everything that can be read of a record.
void readAll(EepromShare const& eeprom, int32_t offset) {
    std::vector<uint8_t> const record = readRecord(eeprom, offset);
    (void)EepromRecordText(*eeprom, offset);
    RegisterEntry entry;
    for (int32_t const n : {0, 1, 100, INT32_MAX}) {
        (void)EepromGetEntry(*eeprom, record, n, entry);
        (void)EepromGetLine(record, n);
    }
}

// Walks the chain; the steps that it took.
int walk(EepromShare const& eeprom) {
    int steps = 0;
    for (int32_t offset = EepromNextRecord(*eeprom, 0); offset >= 0; ++steps) {
        readAll(eeprom, offset);
        offset = EepromNextRecord(*eeprom, offset);
    }
    return steps;
}

// All that works on the chain. The image may change, but never outside of itself.
void exercise(std::vector<uint8_t> const& image) {
    EepromShare const eeprom = eepromOf(image);
    ASSERT_LE(walk(eeprom), int(kImageSize / 3));
    (void)EepromFindRecord(*eeprom, kRecordPga, "DEFAULT", 0);
    (void)EepromFindRecord(*eeprom, kRecordScratchpad, "DEFAULT", 0);
    (void)EepromReplaceRecord(*eeprom, makeRegisterSet(kRecordPga, 8112, nullptr));
    (void)EepromDeleteNth(*eeprom, kAnyRecordType, nullptr, 1);
    int32_t const free = EepromFreeSpace(*eeprom);
    ASSERT_LE(free, int32_t(kImageSize));
    ASSERT_EQ(eeprom->image.size(), kImageSize);
    // What is refused leaves everything as it was.
    if (free < 0) {
        EXPECT_EQ(eeprom->image, image);
    }
}

// A few records of different types: a register set, text, opaque bytes and named data.
std::vector<uint8_t> validImage() {
    EepromShare const eeprom = eepromOf(std::vector<uint8_t>(kImageSize, 0xFF));
    EXPECT_EQ(EepromFormat(*eeprom, -1), kEepromOk);
    EepromRecord set = makeRegisterSet(kRecordPga, 8112, "Set");
    EXPECT_EQ(EepromAddEntry(*eeprom, set, {0, 0, 0x3600, 0, 0, 1}), kEepromOk);
    EXPECT_EQ(EepromAddEntry(*eeprom, set, {0, 0, 0x3780, 2, 0x8000, 1}), kEepromOk);
    EXPECT_EQ(EepromAppendRecord(*eeprom, set), kEepromOk);
    EXPECT_EQ(EepromAppendRecord(*eeprom, recordOf(kRecordHeadboardId, {'S', 'N', 0})), kEepromOk);
    EXPECT_EQ(EepromAppendRecord(*eeprom, recordOf(0x42, {0xFF, 8})), kEepromOk);
    EXPECT_EQ(EepromAppendRecord(*eeprom, recordOf(kRecordScratchpad, std::vector<uint8_t>(20, 'x'))),
              kEepromOk);
    return eeprom->image;
}

TEST(BrokenContent, EverySingleFlippedBitIsSurvived) {
    std::vector<uint8_t> const valid = validImage();
    EepromShare const eeprom = eepromOf(valid);
    auto const end = size_t(EepromFindRecord(*eeprom, kRecordEnd, nullptr, 0));
    ASSERT_EQ(walk(eeprom), 5); // the end marker counts
    for (size_t bit = 0; bit < (end + 4) * 8; ++bit) {
        std::vector<uint8_t> image = valid;
        image[bit / 8] = uint8_t(image[bit / 8] ^ 1 << bit % 8);
        exercise(image);
    }
}
} // namespace
