#include "tests/support/eeprom_access.h"

#include <gtest/gtest.h>
#include <utility>

using namespace simulator;

namespace {
QByteArray big16(uint32_t value) { return QByteArray().append(char(value >> 8)).append(char(value)); }
QByteArray big32(uint32_t value) { return big16(value >> 16) + big16(value); }

QByteArray withLength(char type, QByteArray const& payload) {
    return QByteArray(1, type) + big16(uint32_t(payload.size())) + payload;
}

QByteArray shadingRecord(QByteArray const& name, QByteArray const& blocks) {
    return withLength(8, name.leftJustified(9, '\0') + blocks);
}

QByteArray fullEntry(uint32_t space, uint32_t id, uint32_t address, int size, uint32_t mask, uint32_t value) {
    return QByteArray(1, char(space)) + big32(id) + big32(address) + QByteArray(1, char(size)) + big32(mask) +
           big32(value);
}

QByteArray shortEntry(uint32_t word, uint32_t value) { return big16(word) + big16(value); }

QByteArray device(QByteArray const& records) {
    return (QByteArray("VYEE\x01") + records).leftJustified(8192, '\xFF');
}

// Full entries of the whole register, a bitfield, a byte, and a register whose own width counts.
QByteArray const kPolynomial = shadingRecord(
    "DEFAULT",
    withLength(2, fullEntry(0, 0, 0x3780, 2, 0x8000, 0)) +
        withLength(3, shortEntry(0x3600, 0x3E00) + shortEntry(0x3602, 0x1234)) +
        withLength(2, fullEntry(0, 0, 0x3640, 2, 0, 0x4000) + fullEntry(0, 0, 0x3642, 1, 0, 0xABCD) +
                          fullEntry(0, 0, 0x3644, 0, 0, 0xABCD) + fullEntry(0, 0, 0x3780, 2, 0x8000, 1)));

Camera openRaw() { return openFor(kEepromAccesses[0]); }

TEST(StartUp, WritesEntriesOfEveryKindInTheirOrder) {
    Camera const camera = openRaw();
    programContents(*camera, device(kPolynomial));
    QString error;
    ASSERT_TRUE(camera->replayEeprom({}, &error)) << qPrintable(error);
    EXPECT_EQ(readRegister(*camera, "P_GR_P0Q0"), 0x3E00U);
    EXPECT_EQ(readRegister(*camera, "P_GR_P0Q1"), 0x1234U);
    EXPECT_EQ(readRegister(*camera, "P_RD_P0Q0"), 0x4000U);
    EXPECT_EQ(readRegister(*camera, "P_RD_P0Q1"), 0x00CDU);
    EXPECT_EQ(readRegister(*camera, "P_RD_P0Q2"), 0xABCDU);
    EXPECT_EQ(readRegister(*camera, "POLY_SC_ENABLE"), 0x8000U)
        << "a bitfield's value counts from its lowest bit";
    EXPECT_EQ(camera->registerWrites(), 7U);
    EXPECT_EQ(camera->deviceOperations(), 0U);
}

TEST(StartUp, ShortEntriesHoldPageOrDriver) {
    auto const expectValue = [](char const* profile, QByteArray const& block, char const* reg,
                                uint32_t value) {
        Camera const camera = openProfile(profile);
        programContents(*camera, device(shadingRecord("DEFAULT", block)));
        QString error;
        ASSERT_TRUE(camera->replayEeprom({}, &error)) << profile << qPrintable(error);
        EXPECT_EQ(readRegister(*camera, reg), value) << profile;
    };
    expectValue("paged-154", withLength(3, shortEntry(0x0210, 0x3E00)), "P_GR_P0Q0", 0x3E00);
    expectValue("soc-pga", withLength(4, shortEntry(0x8000 | 2 << 10 | 0x14F, 0x1142)), "EXPOSURE_TARGET",
                0x42);
    expectValue("firmware-switch-95", withLength(4, shortEntry(18 << 10 | 0x0BE, 0x4321)),
                "CAM_PGA_PGA_CONTROL", 0x4321);
}

TEST(StartUp, TakesTheFirstRecordOrTheNamedOneBehindOthers) {
    Camera const camera = openRaw();
    auto const setting = [](uint32_t value) { return withLength(3, shortEntry(0x3600, value)); };
    programContents(*camera, device(withLength(6, "?") + shadingRecord("FIRST", setting(1)) +
                                    shadingRecord("NINECHARS", setting(2))));
    QString error;
    for (auto const& [name, value] : {std::pair<char const*, uint32_t>{nullptr, 1}, {"ninechars", 2}}) {
        ASSERT_TRUE(camera->replayEeprom(QString(name), &error)) << qPrintable(error);
        EXPECT_EQ(readRegister(*camera, "P_GR_P0Q0"), value);
    }
    EXPECT_FALSE(camera->replayEeprom(QStringLiteral("NINE"), &error));
    EXPECT_EQ(error, QStringLiteral("the EEPROM holds no shading registers named \"NINE\""));
}

TEST(StartUp, MalformedContentsChangeNothing) {
    QByteArray const good = withLength(3, shortEntry(0x3600, 0x3E00));
    auto const blocks = [&](QByteArray const& broken) { return device(shadingRecord("A", good + broken)); };
    std::pair<QByteArray, char const*> const rows[] = {
        {QByteArray(8192, '\xFF'), "the EEPROM is not formatted"},
        {device({}), "the EEPROM holds no shading registers"},
        {device(withLength(2, QByteArray(8183, 'x')) + '\x08'), "EEPROM, offset 8191: the record runs over"},
        {device(withLength(8, "DEFAULT")), "EEPROM, offset 5: the record is too short"},
        {blocks('\x05' + big16(0)), "EEPROM, offset 27: the block before"},
        {blocks('\x02' + big16(17) + QByteArray(17, 'x')), "EEPROM, offset 27: the block's length"},
        {blocks('\x03' + big16(8) + "abcd"), "EEPROM, offset 24: the block runs over"},
        {blocks(withLength(3, shortEntry(0x3601, 0))),
         "EEPROM, offset 27: there is no register of 0 bytes at class 0, id 0, address 0x3601"},
        {blocks(withLength(2, fullEntry(0, 0, 0x3600, 5, 0, 1))),
         "EEPROM, offset 27: there is no register of 5 bytes"},
    };
    for (auto const& [contents, message] : rows) {
        SCOPED_TRACE(message);
        Camera const camera = openRaw();
        programContents(*camera, contents);
        QString error;
        EXPECT_FALSE(camera->replayEeprom({}, &error));
        EXPECT_TRUE(error.startsWith(QLatin1String(message))) << qPrintable(error);
        EXPECT_EQ(camera->registerWrites(), 0U);
    }
}
} // namespace
