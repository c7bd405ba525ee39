#include "headboard/record_format.h"
#include "tests/headboard/headboard_fixture.h"

#include <algorithm>
#include <memory>
#include <numeric>

using namespace kestra;

namespace {
using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

// One poll of the bridge that finds the transfer done.
void addBridgeTransfer(Lines& lines, Lines const& writes, int polls) {
    for (std::string const& write : writes)
        lines.push_back("write IO_EEPROM_" + write);
    for (int i = 0; i < polls; ++i)
        lines.insert(lines.end(), {"pause 2", "read IO_EEPROM_STATUS "});
}

TEST(Access, SensorKindDecidesWhereTheEepromIs) {
    using Row = std::tuple<uint32_t, uint32_t, bool>;
    FakeLibraries fake;
    for (auto const& [kind, address, bridgeOnly] :
         {Row{95, 0xAA, false}, Row{99, 0xAA, false}, Row{193, 0xAC, false}, Row{198, 0xAC, false},
          Row{199, 0xAC, false}, Row{71, 0xA8, true}, Row{103, 0xA8, true}, Row{111, 0xA8, true},
          Row{33, 0xA8, false}}) {
        fake.description.sensorKind = kind;
        EepromShare const eeprom = HeadboardEepromCreate(fake.camera());
        EXPECT_EQ(eeprom->deviceAddress, address) << kind;
        EXPECT_EQ(eeprom->bridgeOnly, bridgeOnly) << kind;
        EXPECT_TRUE(eeprom->borrowedHandle);
        HeadboardEepromBind(*eeprom, nullptr);
        EXPECT_TRUE(eeprom->sensor) << "binding no camera changes nothing";
        fake.hasDescription = false;
        HeadboardEepromBind(*eeprom, fake.camera());
        EXPECT_EQ(eeprom->deviceAddress, 0xA8U);
        EXPECT_FALSE(eeprom->bridgeOnly);
        fake.hasDescription = true;
    }
}

TEST(Access, WithoutCameraTheLibraryIsNotAsked) {
    FakeHost host;
    FakeLibraries fake;
    EepromShare const eeprom = HeadboardEepromCreate(nullptr);
    uint8_t byte = 7;
    EXPECT_EQ(HeadboardEepromLoad(*eeprom, 0, 1), kEepromFailed);
    EXPECT_EQ(HeadboardEepromPut(*eeprom, 0, 1, &byte), kEepromOk);
    EXPECT_EQ(HeadboardEepromFlush(*eeprom), kEepromOk);
    EXPECT_EQ(HeadboardEepromDeviceWrite(*eeprom, 0, 1), kEepromFailed);
    EXPECT_EQ(EepromCheckHeader(*eeprom), kEepromFailed);
    HeadboardEepromRelease(*eeprom);
    EXPECT_EQ(host.log, Lines{});
}

TEST(Access, RawPathReadsOnceAndWritesAlignedPairs) {
    Headboard h;
    std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
    std::vector<uint8_t> read(5);
    ASSERT_EQ(HeadboardEepromLoad(*h.eeprom, 3, 5, read.data()), kEepromOk);
    EXPECT_EQ(read, (std::vector<uint8_t>{4, 5, 6, 7, 8}));
    EXPECT_EQ(h.host.log, (Lines{"setMode 1 16", "setMode 2 8", "readBus 168 3 5"}));

    h.host.log.clear();
    std::vector<uint8_t> const bytes = {10, 11, 12, 13, 14, 15};
    ASSERT_EQ(HeadboardEepromPut(*h.eeprom, 7, 6, bytes.data()), kEepromOk);
    EXPECT_EQ(h.host.log, Lines{}) << "nothing reaches the device before the flush";
    ASSERT_EQ(HeadboardEepromFlush(*h.eeprom), kEepromOk);
    EXPECT_EQ(h.host.log,
              (Lines{"setMode 1 16", "setMode 2 8", "writeBus 168 7 1 10", "pause 20", "writeBus 168 8 2 11",
                     "pause 20", "writeBus 168 10 2 13", "pause 20", "writeBus 168 12 1 15", "pause 20"}));
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), h.board.device.begin() + 7));
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 0, -1), kEepromOk);
}

TEST(Access, BridgePathSendsOneCommandForTwoBytes) {
    Headboard h(Path::Bridge);
    std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
    std::vector<uint8_t> read(3);
    ASSERT_EQ(HeadboardEepromLoad(*h.eeprom, 5, 3, read.data()), kEepromOk);
    EXPECT_EQ(read, (std::vector<uint8_t>{6, 7, 8}));
    Lines expected = {"existsRegister IO_EEPROM_I2C_ADDR", "setMode 3 0", "write IO_EEPROM_I2C_ADDR  168"};
    Lines const begin = expected;
    addBridgeTransfer(expected, {"ADDR  5", "COMMAND  528"}, 1);
    expected.push_back("read IO_EEPROM_DATA ");
    addBridgeTransfer(expected, {"ADDR  7", "COMMAND  16"}, 1);
    expected.push_back("read IO_EEPROM_DATA ");
    EXPECT_EQ(h.host.log, expected);

    h.host.log.clear();
    std::vector<uint8_t> const bytes = {0x21, 0x22, 0x23};
    ASSERT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, 4, 3, bytes.data()), kEepromOk);
    expected = begin;
    addBridgeTransfer(expected, {"ADDR  4", "DATA  34", "COMMAND  640"}, 10); // 0x0022: the first byte is cut
    addBridgeTransfer(expected, {"ADDR  6", "DATA  35", "COMMAND  128"}, 10);
    EXPECT_EQ(h.host.log, expected);
}

TEST(Access, BusDescriptionPathDescribesEachLocation) {
    Headboard h(Path::BusDescription);
    std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
    std::vector<uint8_t> read(3);
    ASSERT_EQ(HeadboardEepromLoad(*h.eeprom, 5, 3, read.data()), kEepromOk);
    EXPECT_EQ(read, (std::vector<uint8_t>{6, 7, 8}));
    EXPECT_EQ(h.host.calls("readDescribed"),
              (Lines{"readDescribed 1 168 16 8 0 5 2", "readDescribed 1 168 16 8 0 7 1"}));
    EXPECT_EQ(h.host.calls("setMode"), Lines{});

    std::vector<uint8_t> const bytes = {0x21, 0x22, 0x23};
    ASSERT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, 5, 3, bytes.data()), kEepromOk);
    EXPECT_EQ(h.host.calls("writeDescribed"), (Lines{"writeDescribed 5 2 8482", "writeDescribed 7 1 35"}));
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 0, -1), kEepromOk);

    h.board.registers.erase("DMA_CTRL");
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 100, 1), kEepromFailed) << "no path is left";
}

TEST(Access, BridgeGivesUpAfterFiftyMilliseconds) {
    Headboard h(Path::Bridge);
    auto const start = h.board.clock.now();
    h.board.plan(DeviceFault::BusyForEver);
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 0, 4), kEepromFailed);
    EXPECT_EQ(h.board.clock.now() - start, std::chrono::milliseconds(50));
    EXPECT_EQ(h.host.calls("pause").size(), 25U);
    EXPECT_EQ(h.host.calls("write IO_EEPROM_COMMAND").size(), 1U) << "a failure ends the transfer";
    EXPECT_EQ(h.eeprom->state[0], ByteState::NotRead);
    h.board.plan(DeviceFault::NoAcknowledge);
    EXPECT_NE(HeadboardEepromLoad(*h.eeprom, 0, 4), kEepromOk) << "ready, but nobody is there";
}

TEST(Access, IgnoredWriteShowsInTheVerificationOnly) {
    Headboard h;
    uint8_t const bytes[] = {1, h.board.device[1], 3, 4};
    h.board.plan(DeviceFault::IgnoredWrite, 0, false);
    ASSERT_EQ(HeadboardEepromPut(*h.eeprom, 0, 4, bytes), kEepromOk);
    EXPECT_EQ(HeadboardEepromFlush(*h.eeprom), kEepromOk);
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 1, 3), kEepromOk);
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 0, -1), kEepromMismatch);
}

TEST(Access, RangesAreCutBeforeTheLastByteAndCheckedWithoutOverflow) {
    Headboard h;
    std::vector<uint8_t> const bytes(16, 0);
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 8170, 6), kEepromOk);
    EXPECT_EQ(h.host.calls("readBus"), (Lines{"readBus 168 8170 5"}));
    EXPECT_EQ(HeadboardEepromPut(*h.eeprom, 8170, 16, bytes.data()), kEepromOk);
    EXPECT_EQ(h.eeprom->state[8174], ByteState::Changed);
    EXPECT_EQ(h.eeprom->state[8175], ByteState::NotRead);
    EXPECT_EQ(h.eeprom->image[8175], 0xFF);
    EXPECT_EQ(HeadboardEepromPut(*h.eeprom, 8175, 1, bytes.data()), kEepromOk) << "cut to nothing";
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, INT32_MAX, INT32_MAX), kEepromFailed);
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, -1, 5), kEepromFailed);
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 5, -1), kEepromFailed);
    EXPECT_EQ(HeadboardEepromPut(*h.eeprom, INT32_MIN, INT32_MAX, bytes.data()), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 8170, 7), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, INT32_MAX, INT32_MAX), kEepromFailed);
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 8177, 1), kEepromFailed);
    EXPECT_EQ(HeadboardEepromVerify(*h.eeprom, 8170, INT32_MAX), kEepromOk);
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 8176, 0), kEepromFailed);
    EXPECT_EQ(HeadboardEepromLoad(*h.eeprom, 17, 0), kEepromOk);
    EXPECT_EQ(h.board.operations, 1);
}

TEST(Access, ReleaseClosesOnlyACameraOfItsOwnAndGrowthDropsTheImage) {
    Headboard h;
    uint8_t const byte = 1;
    ASSERT_EQ(HeadboardEepromPut(*h.eeprom, 0, 1, &byte), kEepromOk);
    h.eeprom->deviceSize = 9000;
    EXPECT_EQ(HeadboardEepromPut(*h.eeprom, 8990, 1, &byte), kEepromOk);
    EXPECT_EQ(h.eeprom->imageSize(), 9000);
    EXPECT_EQ(h.eeprom->state[0], ByteState::NotRead);
    HeadboardEepromRelease(*h.eeprom);
    EXPECT_TRUE(h.eeprom->image.empty() && h.eeprom->state.empty());
    EXPECT_EQ(h.host.log, Lines{});
    h.eeprom->borrowedHandle = false;
    HeadboardEepromRelease(*h.eeprom);
    EXPECT_EQ(h.host.log, (Lines{"stopTransport", "closeCameras"}));
    h.eeprom->deviceSize = -5;
    HeadboardEepromEnsureImage(*h.eeprom);
    EXPECT_EQ(h.eeprom->imageSize(), 8);
}

// Callers take what is below 0 for a failure, and what is not for an offset or a size.
static_assert(kEepromOk == 0 && std::max({kEepromFailed, kEepromNotFormatted, kEepromNoRoom, kEepromNoRecord,
                                          kEepromNoAnswer, kEepromBufferTooSmall, kEepromMismatch}) < 0);

TEST(Range, ReadAndWriteOfTheDeviceUseTheCallersBufferAndTheImageAlike) {
    Headboard h;
    std::iota(h.board.device.begin(), h.board.device.begin() + 16, uint8_t{1});
    Bytes read(4);
    ASSERT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 3, 4, read.data()), kEepromOk);
    EXPECT_EQ(read, (Bytes{4, 5, 6, 7}));
    EXPECT_EQ(Bytes(h.eeprom->image.begin() + 3, h.eeprom->image.begin() + 7), read);
    // Whatever the state: what was read once is read again.
    h.board.device[3] = 99;
    ASSERT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 3, 1, read.data()), kEepromOk);
    EXPECT_EQ(read[0], 99);
    Bytes const other = {0x21, 0x22};
    ASSERT_EQ(HeadboardEepromDeviceWrite(*h.eeprom, 8174, 2, other.data()), kEepromOk);
    EXPECT_EQ(Bytes(h.board.device.begin() + 8174, h.board.device.begin() + 8176), other);
    EXPECT_EQ(h.eeprom->image[8175], 0x22);
    EXPECT_EQ(h.eeprom->state[8175], ByteState::Current);
    EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 8176, 0), kEepromOk);
    EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 8177, 0), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, -1, 1), kEepromFailed);
    EXPECT_EQ(HeadboardEepromDeviceRead(*h.eeprom, 0, -1), kEepromFailed);
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
        EXPECT_EQ(EepromNextRecord(*h.eeprom, 0), 5);
        EXPECT_EQ(EepromNextRecord(*h.eeprom, 5), fits ? end : kEepromNoRecord) << length;
        EXPECT_EQ(EepromReadRecord(*h.eeprom, 5, {}), fits ? end - 5 : kEepromFailed) << length;
        EXPECT_EQ(EepromFindRecord(*h.eeprom, kRecordEnd, nullptr, 0), fits ? end : kEepromNoRecord)
            << length;
        EXPECT_EQ(EepromDeleteRecord(*h.eeprom, 5), fits ? kEepromOk : kEepromFailed) << length;
    }
    // Old bytes behind the end mark are no length.
    image[5] = kRecordEnd;
    putU16Be(image, 6, 4);
    h.setImage(image);
    EXPECT_EQ(EepromNextRecord(*h.eeprom, 5), kEepromNoRecord);
    EXPECT_EQ(EepromDeleteRecord(*h.eeprom, 5), kEepromFailed);
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

TEST(Reentry, ByteChangedDuringItsWriteStaysChanged) {
    Headboard h;
    uint8_t const first[] = {1, 2}, second[] = {3};
    ASSERT_EQ(HeadboardEepromPut(*h.eeprom, 0, 2, first), kEepromOk);
    h.host.onCall = [&](std::string const& call) {
        if (call.starts_with("writeBus")) {
            EXPECT_EQ(HeadboardEepromPut(*h.eeprom, 1, 1, second), kEepromOk);
        }
    };
    EXPECT_EQ(HeadboardEepromFlush(*h.eeprom), kEepromOk);
    h.host.onCall = nullptr;
    EXPECT_EQ(h.eeprom->state[0], ByteState::Current);
    EXPECT_EQ(h.eeprom->state[1], ByteState::Changed);
    EXPECT_EQ(HeadboardEepromFlush(*h.eeprom), kEepromOk);
    EXPECT_EQ(h.board.device[1], 3);
}
} // namespace
