#include "tests/support/camera_under_test.h"

#include <array>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

using namespace simulator;

namespace {
QByteArray patterned() {
    QByteArray contents;
    for (int i = 0; i < 8192; ++i)
        contents += char(i * 7 + i / 256);
    return contents;
}

// Raw transfers of any length, after the widths were set.
int writeBytes(Camera const& camera, uint32_t address, std::vector<uint32_t> const& words) {
    return vy_writeRegisters(camera->handle(), 0xA8, address, uint32_t(words.size()), words.data());
}

int readBytes(Camera const& camera, uint32_t address, std::vector<uint32_t>& words) {
    return vy_readRegisters(camera->handle(), 0xA8, address, uint32_t(words.size()), words.data());
}

Camera openRaw() {
    Camera camera = openFor(kEepromAccesses[0]);
    EXPECT_EQ(vy_setMode(camera->handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera->handle(), 2, 8), 0);
    return camera;
}

TEST(Eeprom, EveryAccessMovesBytesInTheirOrderWhereItIsWired) {
    for (EepromAccess const& access : kEepromAccesses) {
        SCOPED_TRACE(access.name);
        Camera const camera = openFor(access);
        programContents(*camera, patterned());
        for (int const count : {1, 2}) {
            QByteArray bytes(count, '\0');
            EXPECT_TRUE(access.read(*camera, 0x1234, bytes));
            EXPECT_EQ(bytes, patterned().mid(0x1234, count));
            EXPECT_TRUE(access.write(*camera, 0x40, QByteArray("\xA1\x5B").left(count)));
            EXPECT_EQ(camera->eepromBytes(), patterned().replace(0x40, count, "\xA1\x5B", count));
        }
        uint64_t const operations = camera->deviceOperations();
        EXPECT_EQ(camera->deviceBytesWritten(), 3U);
        QByteArray bytes(2, '\0');
        for (EepromAccess const& other : {kEepromAccesses[0], kEepromAccesses[2]})
            if (other.move != access.move) {
                EXPECT_FALSE(other.read(*camera, 0, bytes)) << "by " << other.name;
                EXPECT_FALSE(other.write(*camera, 0, bytes)) << "by " << other.name;
            }
        EXPECT_EQ(camera->deviceOperations(), operations);
    }
    uint32_t word = 0;
    EXPECT_EQ(vy_readRegisters(openRaw()->handle(), 0xAA, 0, 1, &word), 12);
}

TEST(Eeprom, WriteWrapsWithinItsPageAndReadAtTheEnd) {
    Camera const camera = openRaw();
    EXPECT_EQ(writeBytes(camera, 0x3E, {1, 2, 3, 4}), 0);
    QByteArray expected(8192, '\xFF');
    expected.replace(0x3E, 2, "\x01\x02");
    expected.replace(0x20, 2, "\x03\x04");
    EXPECT_EQ(camera->eepromBytes(), expected);
    camera->advanceTime(20);
    EXPECT_EQ(writeBytes(camera, 0x2000 + 5, {9}), 0) << "the upper address bits are ignored";
    camera->advanceTime(20);
    programContents(*camera, patterned());
    std::vector<uint32_t> words(3);
    EXPECT_EQ(readBytes(camera, 8191, words), 0);
    EXPECT_EQ(words[0], uint8_t(patterned()[8191]));
    EXPECT_EQ(words[2], uint8_t(patterned()[1]));
}

// A raw pair would wrap here, and the header at the start of the first page would be lost.
TEST(Eeprom, SensorsOwnTransfersCarryAPairOverTheEndOfAPage) {
    for (EepromAccess const& access : {kEepromAccesses[1], kEepromAccesses[2]}) {
        SCOPED_TRACE(access.name);
        Camera const camera = openFor(access);
        programContents(*camera, patterned());
        EXPECT_TRUE(access.write(*camera, 31, "ab"));
        EXPECT_EQ(camera->eepromBytes(), patterned().replace(31, 2, "ab"));
        EXPECT_EQ(camera->deviceOperations(), 2U);
        ASSERT_TRUE(camera->injectFault(QStringLiteral("no-acknowledge"), 2));
        EXPECT_FALSE(access.write(*camera, 63, "cd"));
        EXPECT_EQ(camera->eepromBytes(), patterned().replace(31, 2, "ab").replace(63, 1, "c"));
    }
}

TEST(Eeprom, DoesNotAcknowledgeWhileItStores) {
    Camera const camera = openRaw();
    std::vector<uint32_t> word(1);
    EXPECT_EQ(readBytes(camera, 0, word), 0) << "a read needs no time to recover";
    EXPECT_EQ(writeBytes(camera, 0, {0x11}), 0);
    EXPECT_EQ(readBytes(camera, 0, word), 12);
    camera->advanceTime(19);
    EXPECT_EQ(readBytes(camera, 0, word), 12);
    EXPECT_EQ(writeBytes(camera, 0, {0x22}), 12);
    camera->advanceTime(1);
    EXPECT_EQ(readBytes(camera, 0, word), 0);
    EXPECT_EQ(word[0], 0x11U) << "what was not acknowledged is not stored";
}

TEST(Eeprom, BridgeIsBusyForTheTransferAndTheWriteCycle) {
    Camera const camera = openFor(kEepromAccesses[1]);
    programContents(*camera, patterned());
    struct {
        uint32_t device, command, milliseconds, status; ///< after one millisecond less it is still busy
    } const rows[] = {{0xA8, 0x010, 1, 0x04}, {0xA8, 0x080, 20, 0x04}, {0xA0, 0x010, 1, 0x00}};
    for (auto const& row : rows) {
        SCOPED_TRACE(testing::Message() << row.device << ' ' << row.command);
        writeRegister(*camera, "IO_EEPROM_I2C_ADDR", row.device);
        writeRegister(*camera, "IO_EEPROM_ADDR", 0x100);
        writeRegister(*camera, "IO_EEPROM_DATA", 0x5A);
        writeRegister(*camera, "IO_EEPROM_COMMAND", row.command);
        camera->advanceTime(int(row.milliseconds) - 1);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_STATUS"), 0x10U);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_DATA"), 0x5AU) << "data before they are there";
        camera->advanceTime(1);
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_STATUS"), row.status);
        bool const isRead = row.command == 0x010 && row.status != 0;
        EXPECT_EQ(readRegister(*camera, "IO_EEPROM_DATA"), isRead ? uint8_t(patterned()[0x100]) : 0x5AU);
    }
}

TEST(Eeprom, BadTransfersMoveNothing) {
    Camera const raw = openRaw(), described = openFor(kEepromAccesses[2]);
    uint32_t words[2] = {1, 2};
    EXPECT_NE(vy_readRegisters(raw->handle(), 0xA8, 0, 0xFFFFFFFF, words), 0);
    EXPECT_NE(vy_readRegisters(raw->handle(), 0xA8, 0x10000, 1, words), 0);
    EXPECT_NE(vy_writeRegisters(raw->handle(), 0xA8, 0, 0, words), 0);
    for (auto const& [mode, bits] : {std::pair{2U, 16U}, {1U, 8U}}) {
        EXPECT_EQ(vy_setMode(raw->handle(), mode, bits), 0);
        EXPECT_NE(vy_writeRegisters(raw->handle(), 0xA8, 0, 2, words), 0) << "of another width";
    }
    for (auto const& [addressWidth, address, accessSize] :
         {std::array{8U, 0U, 1U}, {16U, 0x10000U, 1U}, {16U, 0U, 0U}, {16U, 0U, 4U}}) {
        vy_RegisterDescription const location{nullptr, 1, 0xA8, address, addressWidth, 8, accessSize, 0, 0};
        EXPECT_NE(vy_ReadSensorReg(described->handle(), &location, words), 0);
        EXPECT_NE(vy_WriteSensorReg(described->handle(), &location, 0), 0);
    }
    for (Camera const* camera : {&raw, &described})
        EXPECT_EQ((*camera)->eepromBytes(), QByteArray(8192, '\xFF'));
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
    {"none", true, "rwrwr", "+++++"},           {"no-acknowledge", false, "rwrwr", "++-++"},
    {"no-acknowledge", true, "rwrwr", "++---"}, {"no-acknowledge", false, "wwwrw", "++-++"},
    {"busy-for-ever", false, "rwrwr", "++-++"}, {"busy-for-ever", true, "rwwrw", "++---"},
    {"error-12", false, "rwrwr", "++-++"},      {"error-12", true, "rwwwr", "++---"},
    {"flipped-bit", false, "rwrwr", "++!++"},   {"flipped-bit", true, "rwwrw", "++!!!"},
    {"ignored-write", false, "rwwww", "++!++"}, {"ignored-write", true, "rwwrw", "++!+!"},
    {"ignored-write", false, "rwrww", "+++++"}, {"power-cut", false, "wwrwr", "+h+++"},
    {"power-cut", true, "wwrwr", "+h---"},      {"power-cut", false, "wwrrw", "++-++", 4},
    {"power-cut", true, "wwrrw", "++---", 4},
};

constexpr char kFactory = '\x6C';

char outcomeOf(EepromAccess const& access, Camera const& camera, char operation, uint32_t address) {
    bool const isRead = operation == 'r';
    QByteArray const factory(2, kFactory), written = "\x93\x3A";
    QByteArray bytes = isRead ? QByteArray(2, '\0') : written;
    bool const isDone = isRead ? access.read(*camera, address, bytes) : access.write(*camera, address, bytes);
    QByteArray const stored = camera->eepromBytes().mid(int(address), 2);
    if (!isDone)
        return stored == factory ? '-' : stored == written.left(1) + kFactory ? 'h' : '?';
    return (isRead ? bytes == factory : stored == written) ? '+' : '!';
}

TEST(EepromFault, StrikesTheNamedOperationOnEveryAccess) {
    for (EepromAccess const& access : kEepromAccesses)
        for (FaultRow const& row : kFaultRows) {
            SCOPED_TRACE(testing::Message() << access.name << ' ' << row.fault << ' ' << row.operations
                                            << (row.forEver ? " for ever" : " once"));
            Camera const camera = openFor(access);
            programContents(*camera, QByteArray(8192, kFactory));
            ASSERT_TRUE(camera->injectFault(QString::fromLatin1(row.fault), row.n, row.forEver));
            QByteArray outcomes;
            for (uint32_t i = 0; i < 5; ++i)
                outcomes += outcomeOf(access, camera, row.operations[i], i * 32);
            EXPECT_EQ(outcomes, row.outcomes);
            EXPECT_EQ(camera->deviceOperations(), 5U);
            ASSERT_TRUE(camera->injectFault(QStringLiteral("none")));
            EXPECT_EQ(outcomeOf(access, camera, 'w', 5 * 32), '+');
        }
}
} // namespace
