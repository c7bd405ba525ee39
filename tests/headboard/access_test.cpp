#include "tests/headboard/headboard_fixture.h"

#include <algorithm>
#include <map>
#include <numeric>

using namespace kestra;

namespace {
TEST(Access, SensorKindDecidesWhereTheEepromIs) {
    FakeLibraries fake;
    std::map<uint32_t, uint32_t> const addresses = {{33, 0xA8},  {71, 0xA8},  {95, 0xAA},
                                                    {99, 0xAA},  {103, 0xA8}, {111, 0xA8},
                                                    {193, 0xAC}, {198, 0xAC}, {199, 0xAC}};
    for (auto const& [kind, address] : addresses) {
        fake.description.sensorKind = kind;
        EepromShare const eeprom = HeadboardEepromCreate(fake.camera());
        EXPECT_EQ(eeprom->deviceAddress, address) << kind;
        EXPECT_EQ(eeprom->bridgeOnly, kind == 71 || kind == 103 || kind == 111) << kind;
        HeadboardEepromBind(*eeprom, nullptr);
        EXPECT_TRUE(eeprom->sensor) << "binding no camera changes nothing";
        fake.hasDescription = false;
        HeadboardEepromBind(*eeprom, fake.camera());
        EXPECT_TRUE(eeprom->deviceAddress == 0xA8 && !eeprom->bridgeOnly && eeprom->borrowedHandle);
        fake.hasDescription = true;
    }
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
    auto const polls = [](int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "pause 2; read IO_EEPROM_STATUS ; ";
        return text;
    };
    std::string const widths = "setMode 1 16; setMode 2 8; ", asked = "existsRegister IO_EEPROM_I2C_ADDR; ",
                      bridge =
                          asked + "setMode 3 0; write IO_EEPROM_I2C_ADDR  168; write IO_EEPROM_ADDR  5; ",
                      described = asked + "existsRegister DMA_CTRL; ";
    struct {
        Path path;
        std::string read, written;
        EepromStatus verified = kEepromOk;
    } const rows[] = {
        {Path::Raw, widths + "readBus 168 5 3",
         widths + "writeBus 168 5 1 33; pause 20; writeBus 168 6 2 34; pause 20"},
        {Path::Bridge,
         bridge + "write IO_EEPROM_COMMAND  528; " + polls(1) + "read IO_EEPROM_DATA ; " +
             "write IO_EEPROM_ADDR  7; write IO_EEPROM_COMMAND  16; " + polls(1) + "read IO_EEPROM_DATA ",
         bridge + "write IO_EEPROM_DATA  34; write IO_EEPROM_COMMAND  640; " + polls(10) +
             "write IO_EEPROM_ADDR  7; write IO_EEPROM_DATA  35; write IO_EEPROM_COMMAND  128; " + polls(9) +
             "pause 2; read IO_EEPROM_STATUS ",
         kEepromMismatch},
        {Path::BusDescription, described + "readDescribed 1 168 16 8 0 5 2; readDescribed 1 168 16 8 0 7 1",
         described + "writeDescribed 5 2 8482; writeDescribed 7 1 35"},
    };
    for (auto const& row : rows) {
        Headboard h(row.path);
        std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
        Bytes read(3);
        EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 5, 3, read.data()), kEepromOk);
        EXPECT_EQ(read, (Bytes{6, 7, 8}));
        EXPECT_EQ(h.takeLog(), row.read);
        EXPECT_EQ(h.put(5, {0x21, 0x22, 0x23}), kEepromOk);
        EXPECT_EQ(h.takeLog(), "") << "nothing reaches the device before the flush";
        EXPECT_EQ(h.flush(), kEepromOk);
        EXPECT_EQ(h.takeLog(), row.written);
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
    EXPECT_EQ(h.put(8175, {0}), kEepromOk) << "cut to nothing";
    EXPECT_EQ(h.load(17, 0), kEepromOk);
    EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 8176, 0), kEepromOk);
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
