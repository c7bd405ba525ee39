#include "tests/support/eeprom_access.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
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
int writeBytes(SimulatedCamera& camera, uint32_t address, std::vector<uint32_t> const& words) {
    return vy_writeRegisters(camera.handle(), 0xA8, address, uint32_t(words.size()), words.data());
}

int readBytes(SimulatedCamera& camera, uint32_t address, std::vector<uint32_t>& words) {
    return vy_readRegisters(camera.handle(), 0xA8, address, uint32_t(words.size()), words.data());
}

Camera openRaw() {
    Camera camera = openFor(kEepromAccesses[0]);
    EXPECT_EQ(vy_setMode(camera->handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera->handle(), 2, 8), 0);
    return camera;
}

TEST(Eeprom, EveryAccessMovesBytesInTheirOrder) {
    for (EepromAccess const& access : kEepromAccesses) {
        SCOPED_TRACE(access.name);
        Camera const camera = openFor(access);
        programContents(*camera, patterned());
        for (int const count : {1, 2}) {
            QByteArray bytes(count, '\0');
            EXPECT_TRUE(access.read(*camera, 0x1234, bytes));
            EXPECT_EQ(bytes, patterned().mid(0x1234, count));
            EXPECT_TRUE(access.write(*camera, 0x40, QByteArray("\xA1\x5B").left(count)));
            EXPECT_EQ(contentsOf(*camera), patterned().replace(0x40, count, "\xA1\x5B", count));
        }
    }
}

TEST(Eeprom, AnswersOnlyWhereItIsWired) {
    for (EepromAccess const& wired : kEepromAccesses) {
        Camera const camera = openFor(wired);
        for (EepromAccess const& other : {kEepromAccesses[0], kEepromAccesses[2]})
            if (other.read != wired.read) {
                QByteArray bytes(2, '\0');
                EXPECT_FALSE(other.read(*camera, 0, bytes)) << wired.name << " by " << other.name;
                EXPECT_FALSE(other.write(*camera, 0, bytes)) << wired.name << " by " << other.name;
            }
        EXPECT_EQ(camera->deviceOperations(), 0U);
    }
    uint32_t word = 0;
    EXPECT_EQ(vy_readRegisters(openRaw()->handle(), 0xAA, 0, 1, &word), 12);
}

TEST(Eeprom, WriteWrapsWithinItsPageAndReadAtTheEnd) {
    Camera const camera = openRaw();
    EXPECT_EQ(writeBytes(*camera, 0x3E, {1, 2, 3, 4}), 0);
    QByteArray expected(8192, '\xFF');
    expected.replace(0x3E, 2, "\x01\x02");
    expected.replace(0x20, 2, "\x03\x04");
    EXPECT_EQ(contentsOf(*camera), expected);
    camera->advanceTime(20);
    EXPECT_EQ(writeBytes(*camera, 0x2000 + 5, {9}), 0) << "the upper address bits are ignored";
    camera->advanceTime(20);
    programContents(*camera, patterned());
    std::vector<uint32_t> words(3);
    EXPECT_EQ(readBytes(*camera, 8191, words), 0);
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
        EXPECT_EQ(contentsOf(*camera), patterned().replace(31, 2, "ab"));
        EXPECT_EQ(camera->deviceOperations(), 2U);
        ASSERT_TRUE(camera->injectFault(QStringLiteral("no-acknowledge"), 2));
        EXPECT_FALSE(access.write(*camera, 63, "cd"));
        EXPECT_EQ(contentsOf(*camera), patterned().replace(31, 2, "ab").replace(63, 1, "c"));
    }
}

TEST(Eeprom, DoesNotAcknowledgeWhileItStores) {
    Camera const camera = openRaw();
    std::vector<uint32_t> word(1);
    EXPECT_EQ(readBytes(*camera, 0, word), 0) << "a read needs no time to recover";
    EXPECT_EQ(writeBytes(*camera, 0, {0x11}), 0);
    EXPECT_EQ(readBytes(*camera, 0, word), 12);
    camera->advanceTime(19);
    EXPECT_EQ(readBytes(*camera, 0, word), 12);
    EXPECT_EQ(writeBytes(*camera, 0, {0x22}), 12);
    camera->advanceTime(1);
    EXPECT_EQ(readBytes(*camera, 0, word), 0);
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
    Camera const camera = openRaw();
    std::vector<uint32_t> words(2);
    EXPECT_NE(vy_readRegisters(camera->handle(), 0xA8, 0, 0xFFFFFFFF, words.data()), 0);
    EXPECT_NE(vy_readRegisters(camera->handle(), 0xA8, 0x10000, 1, words.data()), 0);
    EXPECT_NE(vy_writeRegisters(camera->handle(), 0xA8, 0, 0, words.data()), 0);
    for (auto const& [mode, bits] : {std::pair{2, 16}, {1, 8}}) {
        EXPECT_EQ(vy_setMode(camera->handle(), uint32_t(mode), uint32_t(bits)), 0);
        EXPECT_NE(writeBytes(*camera, 0, {1, 2}), 0) << "of another width";
    }
    EXPECT_EQ(contentsOf(*camera), QByteArray(8192, '\xFF'));

    Camera const described = openFor(kEepromAccesses[2]);
    for (auto const& [addressWidth, address, accessSize] :
         {std::array{8U, 0U, 1U}, {16U, 0x10000U, 1U}, {16U, 0U, 0U}, {16U, 0U, 4U}}) {
        vy_RegisterDescription const location{nullptr, 1, 0xA8, address, addressWidth, 8, accessSize, 0, 0};
        EXPECT_NE(vy_ReadSensorReg(described->handle(), &location, words.data()), 0);
        EXPECT_NE(vy_WriteSensorReg(described->handle(), &location, 0), 0);
    }
    EXPECT_EQ(contentsOf(*described), QByteArray(8192, '\xFF'));
}

// Five operations under a fault at the third: reads of what the factory left are `r`, writes `w`; the
// expected outcomes are `+` done, `-` failed, `!` done with wrong bytes.
struct FaultRow {
    char const* fault;
    bool forEver;
    char const* operations;
    char const* outcomes;
};

constexpr FaultRow kFaultRows[] = {
    {"none", true, "rwrwr", "+++++"},           {"no-acknowledge", false, "rwrwr", "++-++"},
    {"no-acknowledge", true, "rwrwr", "++---"}, {"no-acknowledge", false, "wwwrw", "++-++"},
    {"busy-for-ever", false, "rwrwr", "++-++"}, {"busy-for-ever", true, "rwwrw", "++---"},
    {"error-12", false, "rwrwr", "++-++"},      {"error-12", true, "rwwwr", "++---"},
    {"flipped-bit", false, "rwrwr", "++!++"},   {"flipped-bit", true, "rwwrw", "++!!!"},
    {"ignored-write", false, "rwwww", "++!++"}, {"ignored-write", true, "rwwrw", "++!+!"},
    {"ignored-write", false, "rwrww", "+++++"},
};

QByteArray const kFactory = QByteArray(8192, '\x6C');

/// What one operation brought, on a page of its own.
struct Transfer {
    char operation = 'r';
    bool isDone = false;
    QByteArray bytes; ///< read or to be written
};

Transfer transfer(EepromAccess const& access, SimulatedCamera& camera, char operation, uint32_t page) {
    Transfer done{.operation = operation, .bytes = operation == 'r' ? QByteArray(2, '\0') : "\x93\x3A"};
    done.isDone = operation == 'r' ? access.read(camera, page * 32, done.bytes)
                                   : access.write(camera, page * 32, done.bytes);
    return done;
}

char outcomeOf(Transfer const& done, QByteArray const& stored) {
    QByteArray const factory = kFactory.left(2);
    if (!done.isDone)
        return stored == factory ? '-' : '?'; // a failed transfer leaves no trace
    return (done.operation == 'r' ? done.bytes == factory : done.bytes == stored) ? '+' : '!';
}

TEST(EepromFault, StrikesTheNamedOperationOnEveryAccess) {
    for (EepromAccess const& access : kEepromAccesses) {
        for (FaultRow const& row : kFaultRows) {
            SCOPED_TRACE(std::string(access.name) + ' ' + row.fault +
                         (row.forEver ? " for ever " : " once ") + row.operations);
            Camera const camera = openFor(access);
            programContents(*camera, kFactory);
            ASSERT_TRUE(camera->injectFault(QString::fromLatin1(row.fault), 3, row.forEver));
            std::vector<Transfer> transfers;
            for (uint32_t i = 0; i < 5; ++i)
                transfers.push_back(transfer(access, *camera, row.operations[i], i));
            EXPECT_EQ(camera->deviceOperations(), 5U);
            ASSERT_TRUE(camera->injectFault(QStringLiteral("none")));
            transfers.push_back(transfer(access, *camera, 'w', 5));

            QByteArray const contents = contentsOf(*camera);
            QByteArray outcomes;
            for (size_t i = 0; i < transfers.size(); ++i)
                outcomes += outcomeOf(transfers[i], contents.mid(int(i) * 32, 2));
            EXPECT_EQ(outcomes, QByteArray(row.outcomes) + '+') << "the last one is without faults";
        }
    }
}

TEST(EepromFault, PowerCutKeepsTheBytesStoredBefore) {
    for (EepromAccess const& access : kEepromAccesses)
        for (bool const forEver : {false, true}) {
            SCOPED_TRACE(std::string(access.name) + (forEver ? " for ever" : " once"));
            Camera const camera = openFor(access);
            programContents(*camera, kFactory);
            ASSERT_TRUE(camera->injectFault(QStringLiteral("power-cut"), 3, forEver));
            EXPECT_TRUE(access.write(*camera, 0, "ab"));
            EXPECT_FALSE(access.write(*camera, 2, "cd"));
            EXPECT_EQ(contentsOf(*camera).left(5), "abc" + kFactory.left(2));
            QByteArray bytes(2, '\0');
            EXPECT_EQ(access.read(*camera, 0, bytes), !forEver);
            ASSERT_TRUE(camera->injectFault(QStringLiteral("power-cut"), 2, forEver));
            EXPECT_TRUE(access.write(*camera, 2, "ef")) << "the transfer was over";
            EXPECT_FALSE(access.read(*camera, 0, bytes));
            EXPECT_EQ(access.read(*camera, 0, bytes), !forEver);
            EXPECT_EQ(camera->deviceBytesWritten(), 5U);
        }
}
} // namespace
