#include "tests/support/camera_under_test.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <utility>
#include <vector>

using namespace simulator;

namespace {
constexpr uint32_t kBusAddress = 0xA8;

QByteArray patterned() {
    QByteArray contents;
    for (int i = 0; i < 8192; ++i)
        contents += char(i * 7 + i / 256);
    return contents;
}

// One way to the EEPROM, as software on the host goes it: the profile that is wired so, and transfers of one
// or two bytes that answer whether they went well. Time passes only where a host would sleep.
struct Access {
    char const* name;
    char const* profile;
    // Takes and gives a pair of bytes as a word, the first one as its high half.
    bool (*move)(SimulatedCamera& camera, bool writes, uint32_t address, uint32_t count, uint32_t& value);

    [[nodiscard]] Camera open(QByteArray const& contents) const {
        Camera camera = openProfile(profile);
        camera->useVirtualTime();
        programContents(*camera, contents);
        return camera;
    }
    [[nodiscard]] std::optional<QByteArray> read(Camera const& camera, uint32_t address, int count) const {
        uint32_t value = 0;
        if (!move(*camera, false, address, uint32_t(count), value))
            return std::nullopt;
        return QByteArray().append(char(value >> 8)).append(char(value)).right(count);
    }
    bool write(Camera const& camera, uint32_t address, QByteArray const& bytes) const {
        uint32_t value = bytes.toHex().toUInt(nullptr, 16);
        return move(*camera, true, address, uint32_t(bytes.size()), value);
    }
};

bool moveRaw(SimulatedCamera& camera, bool writes, uint32_t address, uint32_t count, uint32_t& value) {
    EXPECT_EQ(vy_setMode(camera.handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera.handle(), 2, 8), 0);
    uint32_t bytes[] = {value >> 8, value & 0xFF};
    uint32_t* const first = std::end(bytes) - count;
    int const result = writes ? vy_writeRegisters(camera.handle(), kBusAddress, address, count, first)
                              : vy_readRegisters(camera.handle(), kBusAddress, address, count, first);
    camera.advanceTime(writes ? 20 : 0);
    value = bytes[0] << 8 | bytes[1];
    return result == 0;
}

bool moveByBridge(SimulatedCamera& camera, bool writes, uint32_t address, uint32_t count, uint32_t& value) {
    writeRegister(camera, "IO_EEPROM_DATA", value);
    writeRegister(camera, "IO_EEPROM_I2C_ADDR", kBusAddress);
    writeRegister(camera, "IO_EEPROM_ADDR", address);
    uint32_t const command = (writes ? 0x080 : 0x010) + (count == 2 ? 0x200 : 0);
    if (vy_WriteSensorRegStr(camera.handle(), "IO_EEPROM_COMMAND", "", command) != 0)
        return false;
    uint32_t status = 0x10;
    for (int poll = 0; poll < 25 && (status & 0x10) != 0; ++poll) {
        camera.advanceTime(2);
        status = readRegister(camera, "IO_EEPROM_STATUS");
    }
    value = readRegister(camera, "IO_EEPROM_DATA");
    return status == 0x04;
}

bool moveDescribed(SimulatedCamera& camera, bool writes, uint32_t address, uint32_t count, uint32_t& value) {
    vy_RegisterDescription const place{nullptr, 1, kBusAddress, address, 16, 8, count, 0, 0};
    return (writes ? vy_WriteSensorReg(camera.handle(), &place, value)
                   : vy_ReadSensorReg(camera.handle(), &place, &value)) == 0;
}

constexpr Access kRaw{"raw", "polynomial", moveRaw}, kBridge{"bridge", "eeprom-bridge-71", moveByBridge},
    kDescribed{"description", "bus-master-103", moveDescribed};

// Raw transfers of any length, after the widths were set.
struct RawEeprom : testing::Test {
    RawEeprom() { EXPECT_TRUE(kRaw.read(camera, 0, 1)); }
    [[nodiscard]] int write(uint32_t address, std::vector<uint32_t> const& words) const {
        return vy_writeRegisters(camera->handle(), kBusAddress, address, uint32_t(words.size()),
                                 words.data());
    }
    [[nodiscard]] int read(uint32_t address, std::vector<uint32_t>& words) const {
        return vy_readRegisters(camera->handle(), kBusAddress, address, uint32_t(words.size()), words.data());
    }

    Camera const camera = kRaw.open(QByteArray(8192, '\xFF'));
};

TEST(Eeprom, EveryAccessMovesBytesInTheirOrderWhereItIsWired) {
    for (Access const& access : {kRaw, kBridge, kDescribed}) {
        SCOPED_TRACE(access.name);
        Camera const camera = access.open(patterned());
        for (int const count : {1, 2}) {
            EXPECT_EQ(access.read(camera, 0x1234, count), patterned().mid(0x1234, count));
            EXPECT_TRUE(access.write(camera, 0x40, QByteArray("\xA1\x5B").left(count)));
            EXPECT_EQ(camera->eepromBytes(), patterned().replace(0x40, count, "\xA1\x5B", count));
        }
        for (Access const& other : {kRaw, kDescribed})
            EXPECT_EQ(other.read(camera, 0, 1).has_value(), other.move == access.move) << other.name;
        EXPECT_EQ(camera->deviceBytesWritten(), 3U);
    }
}

TEST_F(RawEeprom, WriteWrapsWithinItsPageAndReadAtTheEnd) {
    uint32_t word = 0;
    EXPECT_EQ(vy_readRegisters(camera->handle(), 0xAA, 0, 1, &word), 12) << "another device";
    EXPECT_EQ(write(0x3E, {1, 2, 3, 4}), 0);
    QByteArray expected(8192, '\xFF');
    expected.replace(0x3E, 2, "\x01\x02").replace(0x20, 2, "\x03\x04");
    EXPECT_EQ(camera->eepromBytes(), expected);
    camera->advanceTime(20);
    EXPECT_EQ(write(0x2000 + 5, {9}), 0) << "the upper address bits are ignored";
    camera->advanceTime(20);
    programContents(*camera, patterned());
    std::vector<uint32_t> words(3);
    EXPECT_EQ(read(8191, words), 0);
    EXPECT_EQ(words[0], uint8_t(patterned()[8191]));
    EXPECT_EQ(words[2], uint8_t(patterned()[1]));
}

// A raw pair would wrap here, and the header at the start of the first page would be lost.
TEST(Eeprom, SensorsOwnTransfersCarryAPairOverTheEndOfAPage) {
    for (Access const& access : {kBridge, kDescribed}) {
        SCOPED_TRACE(access.name);
        Camera const camera = access.open(patterned());
        EXPECT_TRUE(access.write(camera, 31, "ab"));
        EXPECT_EQ(camera->eepromBytes(), patterned().replace(31, 2, "ab"));
        EXPECT_EQ(camera->deviceOperations(), 2U);
        ASSERT_TRUE(camera->injectFault("no-acknowledge", 2));
        EXPECT_FALSE(access.write(camera, 63, "cd"));
        EXPECT_EQ(camera->eepromBytes(), patterned().replace(31, 2, "ab").replace(63, 1, "c"));
    }
}

TEST_F(RawEeprom, DoesNotAcknowledgeWhileItStores) {
    std::vector<uint32_t> word(1);
    EXPECT_EQ(write(0, {0x11}), 0);
    camera->advanceTime(19);
    EXPECT_EQ(read(0, word), 12);
    EXPECT_EQ(write(0, {0x22}), 12);
    camera->advanceTime(1);
    EXPECT_EQ(read(0, word), 0);
    EXPECT_EQ(word[0], 0x11U) << "what was not acknowledged is not stored";
}

TEST(Eeprom, BridgeIsBusyForTheTransferAndTheWriteCycle) {
    Camera const camera = kBridge.open(patterned());
    writeRegister(*camera, "IO_EEPROM_I2C_ADDR", kBusAddress);
    writeRegister(*camera, "IO_EEPROM_ADDR", 0x100);
    for (auto const& [command, milliseconds, data] : {std::array{0x010U, 1U, 1U}, {0x080, 20, 0x5A}}) {
        writeRegister(*camera, "IO_EEPROM_DATA", 0x5A);
        writeRegister(*camera, "IO_EEPROM_COMMAND", command);
        camera->advanceTime(int(milliseconds) - 1);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_STATUS"), 0x10U);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_DATA"), 0x5AU) << "data before they are there";
        camera->advanceTime(1);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_STATUS"), 0x04U);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_DATA"), data);
    }
}

TEST_F(RawEeprom, BadTransfersMoveNothing) {
    Camera const described = kDescribed.open(camera->eepromBytes());
    uint32_t words[2] = {1, 2};
    EXPECT_NE(vy_readRegisters(camera->handle(), kBusAddress, 0, 0xFFFFFFFF, words), 0);
    EXPECT_NE(vy_readRegisters(camera->handle(), kBusAddress, 0x10000, 1, words), 0);
    EXPECT_NE(write(0, {}), 0);
    for (auto const& [mode, bits] : {std::pair{2U, 16U}, {1U, 8U}}) {
        EXPECT_EQ(vy_setMode(camera->handle(), mode, bits), 0);
        EXPECT_NE(write(0, {1, 2}), 0) << "of another width";
    }
    for (uint32_t const accessSize : {0U, 4U}) {
        vy_RegisterDescription const place{nullptr, 1, kBusAddress, 0, 16, 8, accessSize, 0, 0};
        EXPECT_NE(vy_ReadSensorReg(described->handle(), &place, words), 0);
        EXPECT_NE(vy_WriteSensorReg(described->handle(), &place, 0), 0);
    }
    for (Camera const* each : {&camera, &described})
        EXPECT_EQ((*each)->eepromBytes(), QByteArray(8192, '\xFF'));
}

// Five operations, reads of what the factory left are `r`, writes `w`; the expected outcomes are `+` done,
// `-` failed without a trace, `!` done with wrong bytes, `h` failed after half of the bytes.
struct FaultRow {
    char const* fault;
    bool forEver;
    char const* operations;
    char const* outcomes;
    uint64_t n = 3; ///< operations, of a power cut stored bytes
};

constexpr FaultRow kFaultRows[] = {
    {"none", true, "rwrwr", "+++++"},          {"no-acknowledge", true, "rwrwr", "++---"},
    {"error-12", false, "rwrwr", "++-++"},     {"no-acknowledge", false, "wwwrw", "++-++"},
    {"flipped-bit", false, "rwrwr", "++!++"},  {"flipped-bit", true, "rwwrw", "++!!!"},
    {"busy-for-ever", true, "rwwrw", "++---"}, {"ignored-write", false, "rwwww", "++!++"},
    {"power-cut", false, "wwrwr", "+h+++"},    {"ignored-write", true, "rwwrw", "++!+!"},
    {"power-cut", true, "wwrwr", "+h---"},     {"power-cut", true, "wwrrw", "++---", 4},
};

char outcomeOf(Access const& access, Camera const& camera, char operation, uint32_t address) {
    QByteArray const factory = "ff", written = "wW";
    bool const isRead = operation == 'r';
    auto const bytes = isRead ? access.read(camera, address, 2) : std::nullopt;
    bool const isDone = isRead ? bytes.has_value() : access.write(camera, address, written);
    QByteArray const stored = camera->eepromBytes().mid(int(address), 2);
    if (!isDone)
        return stored == factory ? '-' : stored == "wf" ? 'h' : '?';
    return (isRead ? bytes == factory : stored == written) ? '+' : '!';
}

TEST(EepromFault, StrikesTheNamedOperationOnEveryAccess) {
    for (Access const& access : {kRaw, kBridge, kDescribed})
        for (FaultRow const& row : kFaultRows) {
            SCOPED_TRACE(testing::Message() << access.name << ' ' << row.fault << ' ' << row.operations
                                            << (row.forEver ? " for ever" : " once"));
            Camera const camera = access.open(QByteArray(8192, 'f'));
            ASSERT_TRUE(camera->injectFault(row.fault, row.n, row.forEver));
            QByteArray outcomes;
            for (uint32_t i = 0; i < 5; ++i)
                outcomes += outcomeOf(access, camera, row.operations[i], i * 32);
            EXPECT_EQ(outcomes, row.outcomes);
            EXPECT_EQ(camera->deviceOperations(), 5U);
            ASSERT_TRUE(camera->injectFault("none"));
            EXPECT_EQ(outcomeOf(access, camera, 'w', 5 * 32), '+');
        }
}
} // namespace
