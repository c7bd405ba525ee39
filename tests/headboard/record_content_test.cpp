#include "tests/headboard/headboard_fixture.h"

using namespace kestra;

namespace {
using Bytes = std::vector<uint8_t>;

struct RecordContent : ::testing::Test, Headboard {
    Bytes content() const { return {record.payload().begin() + 9, record.payload().end()}; }
    int32_t add(RegisterEntry const& entry) { return EepromAddEntry(*eeprom, record, entry); }
    RegisterEntry entry(size_t n) const { return entriesOf(eeprom, bytesOf(record)).at(n); }
    EepromRecord record = makeRegisterSet(kRecordPga, 8112, "N");
};

TEST_F(RecordContent, EntriesOfOneKindShareABlock) {
    fake.description.registerDataWidth = 8;
    ASSERT_EQ(add({0, 0, 0x3600, 2, 0, 0x1234}), kEepromOk);
    ASSERT_EQ(add({0, 0, 0x3602, 2, 0, 0x5678}), kEepromOk);
    ASSERT_EQ(add({1, 18, 0x42, 1, 0, 7}), kEepromOk);
    ASSERT_EQ(add({0, 0, 0x3780, 2, 0x8000, 0x12345678}), kEepromOk);
    EXPECT_EQ(content(), (Bytes{3, 0,    8,    0x36, 0, 0x12, 0x34, 0x36, 2, 0x56, 0x78, 4,    0,
                                4, 0xC8, 0x42, 0,    7, 2,    0,    18,   0, 0,    0,    0,    0,
                                0, 0,    0x37, 0x80, 2, 0,    0,    0x80, 0, 0x12, 0x34, 0x56, 0x78}));
    EXPECT_EQ(entry(1), (RegisterEntry{0, 0, 0x3602, 2, 0, 0x5678}));
    EXPECT_EQ(entry(2), (RegisterEntry{1, 18, 0x42, 1, 0, 7}));
    EXPECT_EQ(entry(3), (RegisterEntry{0, 0, 0x3780, 2, 0x8000, 0x12345678}));
    EXPECT_EQ(entriesOf(eeprom, bytesOf(record)).size(), 4U);
}

TEST_F(RecordContent, KindFollowsClassSizeMaskAndTheSensorsWidths) {
    using Row = std::tuple<RegisterEntry, uint32_t, bool, int>;
    for (auto const& [added, dataWidth, hasDescription, kind] :
         {Row{{0, 0, 1, 0, 0, 0}, 16, true, 3}, Row{{0, 0, 1, 1, 0, 0}, 16, true, 3},
          Row{{0, 0, 1, 2, 0, 0}, 16, true, 2}, Row{{0, 0, 1, 2, 0, 0}, 8, true, 3},
          Row{{0, 0, 1, 1, 0, 0}, 0, true, 2}, Row{{0, 0, 1, 4, 0, 0}, 16, false, 3},
          Row{{0, 0, 1, 0, 1, 0}, 16, false, 2}, Row{{1, 0, 1, 0, 0, 0}, 16, true, 4},
          Row{{1, 0, 1, 4, 0, 0}, 16, true, 2}, Row{{1, 0, 1, 1, 1, 0}, 16, true, 2},
          Row{{2, 0, 1, 1, 0, 0}, 16, true, 2}}) {
        fake.description.registerDataWidth = dataWidth;
        fake.hasDescription = hasDescription;
        record = makeRegisterSet(kRecordPga, 8112, nullptr);
        ASSERT_EQ(add(added), kEepromOk);
        EXPECT_EQ(content()[0], kind) << added.registerClass << ' ' << added.size;
    }
}

TEST_F(RecordContent, ShortRegistersOfPagedSensorsHoldTheirPage) {
    fake.description.registerAddressWidth = 8;
    fake.description.registerDataWidth = 0;
    ASSERT_EQ(add({0, 5, 0x17, 0, 0, 9}), kEepromOk);
    EXPECT_EQ(entry(0), (RegisterEntry{0, 5, 0x17, 1, 0, 9})) << "a width of 0 divides nothing";
    fake.hasDescription = false;
    EXPECT_EQ(entry(0), (RegisterEntry{0, 0, 0x517, 1, 0, 9}));
}

TEST_F(RecordContent, EntryWithoutSizeTakesThatOfItsRegister) {
    board.add("ONE_BYTE_VARIABLE", 1, 18, 0x42, 1);
    ASSERT_EQ(add({1, 18, 0x42, 0, 0, 7}), kEepromOk);
    ASSERT_EQ(add({1, 18, 0x43, 0, 0, 7}), kEepromOk);
    EXPECT_EQ(entry(0).size, 1U);
    EXPECT_EQ(entry(1).size, 2U) << "variables have two bytes where the map does not tell";
}

TEST_F(RecordContent, ClassAndIdFollowTheAddressSpace) {
    using Row = std::tuple<uint32_t, bool, uint32_t, uint32_t, uint32_t, uint32_t>;
    board.add("R", 0, 6, 0x20, 4, 0xABCD);
    board.addBitfield("R", "B", 0xFF00);
    // Where an entry carries no size, that of the register with the same class and id is taken.
    for (auto const& [space, pages, maps, registerClass, id, size] :
         {Row{0, false, 0, 0, 0, 0}, Row{0, true, 0, 0, 6, 4}, Row{3, true, 0, 0, 6, 0},
          Row{10, false, 0, 0, 0, 0}, Row{1, false, 0, 1, 6, 4}, Row{2, false, 0, 2, 6, 4},
          Row{5, false, 0, 5, 6, 4}, Row{6, false, 0, 6, 6, 4}, Row{8, false, 0, 8, 6, 4},
          Row{9, false, 0, 9, 6, 4}, Row{4, true, 0x80, 4, 0, 0}, Row{4, true, 0x10, 4, 6, 4},
          Row{7, true, 0x10, 7, 0, 0}, Row{7, true, 0x80, 7, 6, 4}}) {
        board.registers["R"].description.addressSpace = space;
        fake.description.hasPageSelect = pages;
        fake.description.secondaryMaps = maps;
        record = makeRegisterSet(kRecordPga, 8112, nullptr);
        ASSERT_EQ(EepromAddRegisterCurrent(*eeprom, record, "R", "B"), kEepromOk);
        EXPECT_EQ(entry(0), (RegisterEntry{registerClass, id, 0x20, size, 0xFF00, 0xAB})) << space;
    }
    EXPECT_EQ(EepromAddRegister(*eeprom, record, "R", "X", 1), kEepromFailed);
    EXPECT_EQ(EepromAddRegister(*eeprom, record, "X", "", 1), kEepromFailed);
    EXPECT_EQ(EepromAddRegisterCurrent(*eeprom, record, "X", ""), kEepromFailed);
}

TEST_F(RecordContent, CapacityBoundsEntriesAndLines) {
    record = makeRegisterSet(kRecordPga, 40, nullptr);
    ASSERT_EQ(add({2, 0, 1, 1, 0, 0}), kEepromOk); // 9 + 3 + 18
    EXPECT_EQ(add({2, 0, 1, 1, 0, 0}), kEepromNoRoom);
    record = makeRegisterSet(kRecordPga, 42, nullptr);
    ASSERT_EQ(add({2, 0, 1, 1, 0, 0}), kEepromOk);
    EXPECT_EQ(add({2, 0, 1, 1, 0, 5}), kEepromOk) << "accepted below the limit, it may end beyond it";
    EXPECT_EQ(entry(1).value, 5U);
    EXPECT_EQ(add({2, 0, 1, 1, 0, 0}), kEepromNoRoom);

    record = makeRegisterSet(kRecordSwPga, 30, nullptr);
    EXPECT_EQ(EepromAddLine(record, std::string(14, 'x')), kEepromNoRoom);
    EXPECT_EQ(EepromAddLine(record, std::string(13, 'x')), kEepromOk);
    record = makeRegisterSet(kRecordSwPga, INT32_MAX, nullptr);
    EXPECT_EQ(EepromAddLine(record, std::string(65600, 'x')), kEepromNoRoom) << "no length can tell it";
}

TEST_F(RecordContent, LinesAreCountedFromBehindTheName) {
    ASSERT_EQ(EepromAddLine(record, "WB Speed,3"), kEepromOk);
    ASSERT_EQ(EepromAddLine(record, ""), kEepromOk);
    ASSERT_TRUE(record.append(Bytes{'c', 'u', 't'}));
    std::string line;
    EXPECT_EQ(EepromGetLine(record.bytes(), 0, &line), 10);
    EXPECT_EQ(line, "WB Speed,3");
    EXPECT_EQ(EepromGetLine(record.bytes(), 1), 0);
    EXPECT_EQ(EepromGetLine(record.bytes(), 2, &line), 3);
    EXPECT_EQ(line, "cut");
    EXPECT_EQ(EepromGetLine(record.bytes(), 3, &line), kEepromFailed);
    EXPECT_EQ(add({0, 0, 1, 0, 0, 0}), kEepromFailed) << "lines are no blocks of entries";
}
} // namespace
