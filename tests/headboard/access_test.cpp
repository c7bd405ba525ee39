#include "tests/headboard/headboard_fixture.h"

#include <algorithm>
#include <numeric>

using namespace kestra;

namespace {
TEST(Access, SensorKindDecidesWhereTheEepromIs) {
    FakeLibraries fake;
    EepromShare eeprom = HeadboardEepromCreate(fake.camera());
    using Row = std::tuple<uint32_t, uint32_t, bool>;
    for (auto const& [kind, address, bridgeOnly] :
         {Row{33, 0xA8, false}, Row{71, 0xA8, true}, Row{95, 0xAA, false}, Row{99, 0xAA, false},
          Row{103, 0xA8, true}, Row{193, 0xAC, false}, Row{198, 0xAC, false}, Row{199, 0xAC, false},
          Row{111, 0xA8, true}}) {
        fake.description.sensorKind = kind;
        eeprom = HeadboardEepromCreate(fake.camera());
        EXPECT_EQ(eeprom->deviceAddress, address) << kind;
        EXPECT_EQ(eeprom->bridgeOnly, bridgeOnly) << kind;
    }
    HeadboardEepromBind(*eeprom, nullptr);
    EXPECT_TRUE(eeprom->sensor && eeprom->bridgeOnly) << "binding no camera changes nothing";
    fake.hasDescription = false;
    HeadboardEepromBind(*eeprom, fake.camera());
    EXPECT_TRUE(eeprom->deviceAddress == 0xA8 && !eeprom->bridgeOnly && eeprom->borrowedHandle);
}

TEST(Access, WithoutCameraTheLibraryIsNotAsked) {
    Headboard h;
    h.eeprom = HeadboardEepromCreate(nullptr);
    EXPECT_EQ(h.load(0, 1), kEepromFailed);
    EXPECT_EQ(h.put(0, {7}), kEepromOk);
    EXPECT_EQ(h.flush(), kEepromOk);
    EXPECT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, 0, 1), kEepromFailed);
    EXPECT_EQ(EepromCheckHeader(*h.eeprom), kEepromFailed);
    HeadboardEepromRelease(*h.eeprom);
    EXPECT_EQ(h.takeLog(), "");
}

// Raw writes are pairs at even addresses; a bridge takes one command for two bytes, of which it loses the
// first when it writes; a description is made for each piece.
TEST(Access, EachPathMakesItsTransfers) {
    struct {
        Path path;
        char const *read, *written;
        EepromStatus verified = kEepromOk;
    } const rows[] = {
        {Path::Raw, "setMode 1 16; setMode 2 8; readBus 168 5 3",
         "setMode 1 16; setMode 2 8; writeBus 168 5 1 33; pause 20; writeBus 168 6 2 34; pause 20"},
        {Path::Bridge,
         "existsRegister IO_EEPROM_I2C_ADDR; setMode 3 0; write IO_EEPROM_I2C_ADDR  168; "
         "write IO_EEPROM_ADDR  5; write IO_EEPROM_COMMAND  528; read IO_EEPROM_DATA ; "
         "write IO_EEPROM_ADDR  7; write IO_EEPROM_COMMAND  16; read IO_EEPROM_DATA ",
         "existsRegister IO_EEPROM_I2C_ADDR; setMode 3 0; write IO_EEPROM_I2C_ADDR  168; "
         "write IO_EEPROM_ADDR  5; write IO_EEPROM_DATA  34; write IO_EEPROM_COMMAND  640; "
         "write IO_EEPROM_ADDR  7; write IO_EEPROM_DATA  35; write IO_EEPROM_COMMAND  128",
         kEepromMismatch},
        {Path::BusDescription,
         "existsRegister IO_EEPROM_I2C_ADDR; existsRegister DMA_CTRL; "
         "readDescribed 1 168 16 8 0 5 2; readDescribed 1 168 16 8 0 7 1",
         "existsRegister IO_EEPROM_I2C_ADDR; existsRegister DMA_CTRL; "
         "writeDescribed 5 2 8482; writeDescribed 7 1 35"},
    };
    for (auto const& row : rows) {
        Headboard h(row.path);
        auto const takeTransfers = [&] {
            std::erase(h.host.log, "pause 2"); // how often the bridge is asked is another matter
            std::erase(h.host.log, "read IO_EEPROM_STATUS ");
            return h.takeLog();
        };
        std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
        Bytes read(3);
        EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 5, 3, read.data()), kEepromOk);
        EXPECT_EQ(read, (Bytes{6, 7, 8}));
        EXPECT_EQ(takeTransfers(), row.read);
        EXPECT_EQ(h.put(5, {0x21, 0x22, 0x23}), kEepromOk);
        EXPECT_EQ(h.takeLog(), "") << "nothing reaches the device before the flush";
        EXPECT_EQ(h.flush(), kEepromOk);
        EXPECT_EQ(takeTransfers(), row.written);
        h.board.clock.advance(std::chrono::milliseconds(20));
        EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 6, 2), kEepromOk);
        EXPECT_EQ(h.verify(), row.verified);
        h.board.registers.clear();
        EXPECT_EQ(h.load(100, 1), row.path == Path::Raw ? kEepromOk : kEepromFailed) << "no path is left";
    }
}

TEST(Access, BridgeGivesUpAfterFiftyMilliseconds) {
    Headboard h(Path::Bridge);
    auto const start = h.board.clock.now();
    h.board.plan(DeviceFault::BusyForEver);
    EXPECT_EQ(h.load(0, 4), kEepromFailed);
    EXPECT_EQ(h.board.clock.now() - start, std::chrono::milliseconds(50));
    EXPECT_EQ(h.host.calls("pause").size(), 25U);
    EXPECT_EQ(h.host.calls("write IO_EEPROM_COMMAND").size(), 1U) << "a failure ends the transfer";
    EXPECT_EQ(h.eeprom->state[0], ByteState::NotRead);
    h.board.plan(DeviceFault::NoAcknowledge);
    EXPECT_NE(h.load(0, 4), kEepromOk) << "ready, but nobody is there";
}

TEST(Access, RangesAreCutBeforeTheLastByteAndCheckedWithoutOverflow) {
    Headboard h;
    EXPECT_EQ(h.load(8170, 6), kEepromOk);
    EXPECT_EQ(h.host.calls("readBus"), std::vector<std::string>{"readBus 168 8170 5"});
    EXPECT_EQ(h.put(8170, Bytes(16)), kEepromOk);
    EXPECT_EQ(h.eeprom->state[8174], ByteState::Changed);
    EXPECT_EQ(h.eeprom->state[8175], ByteState::NotRead);
    EXPECT_EQ(h.eeprom->image[8175], 0xFF);
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 8170, INT32_MAX), kEepromOk);
    using Ranges = std::vector<std::pair<int32_t, int32_t>>;
    for (auto const& [offset, count] : Ranges{{INT32_MAX, INT32_MAX}, {-1, 5}, {5, -1}, {8176, 0}})
        EXPECT_EQ(h.load(offset, count), kEepromFailed) << offset;
    for (auto const& [offset, count] : Ranges{{8170, 7}, {8177, 0}, {-1, 1}, {0, -1}})
        EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, offset, count), kEepromFailed) << offset;
    EXPECT_EQ(HeadboardEepromPut(*h.eeprom, INT32_MIN, INT32_MAX, nullptr), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, INT32_MAX, INT32_MAX), kEepromFailed);
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 8177, 1), kEepromFailed);
    EXPECT_EQ(h.board.operations, 1);
}

TEST(Access, ReleaseClosesOnlyACameraOfItsOwnAndGrowthDropsTheImage) {
    Headboard h;
    ASSERT_EQ(h.put(0, {1}), kEepromOk);
    h.eeprom->deviceSize = 9000;
    EXPECT_EQ(h.put(8990, {1}), kEepromOk);
    EXPECT_EQ(h.eeprom->imageSize(), 9000);
    EXPECT_EQ(h.eeprom->state[0], ByteState::NotRead);
    HeadboardEepromRelease(*h.eeprom);
    EXPECT_TRUE(h.eeprom->image.empty() && h.eeprom->state.empty());
    EXPECT_EQ(h.takeLog(), "");
    h.eeprom->borrowedHandle = false;
    HeadboardEepromRelease(*h.eeprom);
    EXPECT_EQ(h.takeLog(), "stopTransport; closeCameras");
    h.eeprom->deviceSize = -5;
    HeadboardEepromEnsureImage(*h.eeprom);
    EXPECT_EQ(h.eeprom->imageSize(), 8);
}

TEST(Access, TheDeviceIsReadAndWrittenWhateverTheStateThroughBufferAndImageAlike) {
    Headboard h;
    std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
    for (uint8_t const changed : Bytes{4, 99}) { // what was read once is read again
        h.board.device[3] = changed;
        Bytes read(4);
        ASSERT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 3, 4, read.data()), kEepromOk);
        EXPECT_EQ(read, (Bytes{changed, 5, 6, 7}));
        EXPECT_TRUE(std::equal(read.begin(), read.end(), h.eeprom->image.begin() + 3));
    }
    Bytes const other = {0x21, 0x22};
    ASSERT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, 8174, 2, other.data()), kEepromOk);
    EXPECT_EQ(h.onDevice(8174, 2), other);
    EXPECT_EQ(h.eeprom->image[8175], 0x22);
    EXPECT_EQ(h.eeprom->state[8175], ByteState::Current);
}

TEST(Access, AByteChangedDuringItsWriteStaysChanged) {
    Headboard h;
    ASSERT_EQ(h.put(0, {1, 2}), kEepromOk);
    h.host.onCall = [&](std::string const& call) {
        EXPECT_TRUE(!call.starts_with("writeBus") || h.put(1, {3}) == kEepromOk);
    };
    EXPECT_EQ(h.flush(), kEepromOk);
    h.host.onCall = nullptr;
    EXPECT_EQ(h.eeprom->state[0], ByteState::Current);
    EXPECT_EQ(h.eeprom->state[1], ByteState::Changed);
    EXPECT_EQ(h.flush(), kEepromOk);
    EXPECT_EQ(h.board.device[1], 3);
    EXPECT_EQ(h.verify(), kEepromOk);
    h.board.device[0] = 9;
    EXPECT_EQ(h.verify(), kEepromMismatch);
}

// The host may delete a page inside any transfer of its save.
TEST(Access, APageThatIsGoneLeavesAloneWhatTheNextUserChanges) {
    Headboard h;
    EepromSlot slot = nullptr;
    EepromUse use(slot);
    HeadboardEeprom& taken = use.renew(h.fake.camera());
    EXPECT_EQ(&taken, slot);
    ASSERT_EQ(HeadboardEepromLoad(taken, 0, 4), kEepromOk);
    use.flush();
    EXPECT_EQ(taken.image.size(), 8176U) << "what is known of the device is kept";
    use.abandon();
    EXPECT_EQ(slot, nullptr) << "the next user gets another one";
    EepromShare const others = sharedEeprom(slot, h.fake.camera());
    ASSERT_EQ(EepromFormat(*others, -1), kEepromOk);
    use.flush();
    EXPECT_TRUE(HeadboardEepromHasChanges(*others));
    discardEeprom(slot);
    EXPECT_FALSE(HeadboardEepromHasChanges(*others)) << "what was not written is dropped";
    EXPECT_EQ(slot, nullptr);
}

TEST(Access, ProbeFormatsABlankDeviceAndTellsSilenceFromFailure) {
    Headboard h;
    for (int64_t const operations : {4, 0}) { // a formatted one is left alone
        h.board.operations = 0;
        EXPECT_EQ(probeEeprom(*h.eeprom), EepromState::Present);
        EXPECT_EQ(h.board.operations, operations);
        EXPECT_EQ(h.onDevice(0, 6), (Bytes{'V', 'Y', 'E', 'E', 1, 0xFF}));
    }
    using enum DeviceFault;
    for (auto const& [isFormatted, fault, presence] : {std::tuple(true, NoAcknowledge, EepromState::Absent),
                                                       {true, TransportFailed, EepromState::Unknown},
                                                       {false, NoAcknowledge, EepromState::Absent},
                                                       {false, TransportFailed, EepromState::Absent}}) {
        HeadboardEepromRelease(*h.eeprom);
        h.board.device[0] = isFormatted ? 'V' : 0xFF;
        // A read comes first: of a blank device it succeeds, and the write of the header meets the fault.
        h.board.plan(fault, isFormatted ? 0 : 1);
        EXPECT_EQ(probeEeprom(*h.eeprom), presence) << isFormatted << int(fault);
    }
}
} // namespace
