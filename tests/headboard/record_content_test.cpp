#include "tests/headboard/headboard_fixture.h"

using namespace kestra;

namespace {
struct RecordContent : ::testing::Test, Headboard {
    int32_t add(RegisterEntry const& entry) { return EepromAddEntry(*eeprom, set, entry); }
    RegisterEntry entry(size_t n) { return entries(set.bytes()).at(n); }
    EepromRecord set = registerSet("N");
};

TEST_F(RecordContent, EntriesOfOneKindShareABlock) {
    fake.description.registerDataWidth = 8;
    std::vector<RegisterEntry> const all = {{0, 0, 0x3600, 2, 0, 0x1234},
                                            {0, 0, 0x3602, 2, 0, 0x5678},
                                            {1, 18, 0x42, 1, 0, 7},
                                            {0, 0, 0x3780, 2, 0x8000, 0x12345678}};
    for (RegisterEntry const& each : all)
        ASSERT_EQ(add(each), kEepromOk);
    EXPECT_EQ(Bytes(set.payload().begin() + 9, set.payload().end()),
              (Bytes{3, 0,    8,    0x36, 0, 0x12, 0x34, 0x36, 2, 0x56, 0x78, 4,    0,
                     4, 0xC8, 0x42, 0,    7, 2,    0,    18,   0, 0,    0,    0,    0,
                     0, 0,    0x37, 0x80, 2, 0,    0,    0x80, 0, 0x12, 0x34, 0x56, 0x78}));
    EXPECT_EQ(entries(set.bytes()), all);
    Bytes longer(set.bytes().begin(), set.bytes().end());
    longer.insert(longer.end(), {3, 0, 4, 1, 2, 3, 4});
    EXPECT_EQ(entries(longer), all) << "what lies behind a record is none of it";
}

TEST_F(RecordContent, KindFollowsClassSizeMaskAndTheSensorsWidths) {
    using Row = std::array<uint32_t, 5>;   // of class, size and mask, of the sensor's width, and the kind
    constexpr uint32_t kNone = 0xFFFFFFFF; // as a width: the sensor has no description
    for (auto const& [registerClass, size, mask, width, kind] :
         {Row{0, 0, 0, 16, 3}, Row{0, 1, 0, 16, 3}, Row{0, 2, 0, 16, 2}, Row{0, 2, 0, 8, 3},
          Row{0, 1, 0, 0, 2}, Row{0, 4, 0, kNone, 3}, Row{0, 0, 1, kNone, 2}, Row{1, 0, 0, 16, 4},
          Row{1, 4, 0, 16, 2}, Row{1, 1, 1, 16, 2}, Row{2, 1, 0, 16, 2}}) {
        fake.description.registerDataWidth = width;
        fake.hasDescription = width != kNone;
        set = registerSet(nullptr);
        ASSERT_EQ(add({registerClass, 0, 1, size, mask, 0}), kEepromOk);
        EXPECT_EQ(set.payload()[9], kind) << registerClass << ' ' << size;
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

TEST_F(RecordContent, ClassAndIdFollowTheAddressSpace) {
    board.add("R", 0, 6, 0x20, 4, 0xABCD);
    board.addBitfield("R", "B", 0xFF00);
    using Row = std::array<uint32_t, 6>;
    // Where an entry carries no size, that of the register with the same class and id is taken.
    for (auto const& [space, pages, maps, registerClass, id, size] :
         {Row{0, 0, 0, 0, 0, 0}, Row{0, 1, 0, 0, 6, 4}, Row{3, 1, 0, 0, 6, 0}, Row{10, 0, 0, 0, 0, 0},
          Row{1, 0, 0, 1, 6, 4}, Row{2, 0, 0, 2, 6, 4}, Row{5, 0, 0, 5, 6, 4}, Row{6, 0, 0, 6, 6, 4},
          Row{8, 0, 0, 8, 6, 4}, Row{9, 0, 0, 9, 6, 4}, Row{4, 1, 0x80, 4, 0, 0}, Row{4, 1, 0x10, 4, 6, 4},
          Row{7, 1, 0x10, 7, 0, 0}, Row{7, 1, 0x80, 7, 6, 4}}) {
        board.registers["R"].description.addressSpace = space;
        fake.description.hasPageSelect = pages;
        fake.description.secondaryMaps = maps;
        set = registerSet(nullptr);
        ASSERT_EQ(EepromAddRegisterCurrent(*eeprom, set, "R", "B"), kEepromOk);
        EXPECT_EQ(entry(0), (RegisterEntry{registerClass, id, 0x20, size, 0xFF00, 0xAB})) << space;
    }
    EXPECT_EQ(EepromAddRegister(*eeprom, set, "R", "X", 1), kEepromFailed);
    EXPECT_EQ(EepromAddRegister(*eeprom, set, "X", "", 1), kEepromFailed);
    EXPECT_EQ(EepromAddRegisterCurrent(*eeprom, set, "X", ""), kEepromFailed);
}

TEST_F(RecordContent, CapacityBoundsEntriesAndLinesAndTheLengthEveryPayload) {
    RegisterEntry const full = {2, 0, 1, 1, 0, 5};
    set = registerSet(nullptr, 42);
    ASSERT_EQ(add(full), kEepromOk); // 9 + 3 + 18
    EXPECT_EQ(add(full), kEepromOk) << "accepted below the limit, it may end beyond it";
    EXPECT_EQ(add(full), kEepromNoRoom);
    EXPECT_EQ(entries(set.bytes()), (std::vector{full, full}));
    set = registerSet(nullptr, 41);
    ASSERT_EQ(add(full), kEepromOk);
    EXPECT_EQ(add(full), kEepromNoRoom);

    set = registerSet(nullptr, 30);
    EXPECT_EQ(EepromAddLine(set, std::string(14, 'x')), kEepromNoRoom);
    EXPECT_EQ(EepromAddLine(set, std::string(13, 'x')), kEepromOk);
    set = registerSet(nullptr, INT32_MAX);
    EXPECT_EQ(EepromAddLine(set, std::string(65600, 'x')), kEepromNoRoom) << "no length can tell it";
}
} // namespace
