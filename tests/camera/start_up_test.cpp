#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>
#include <utility>

using namespace simulator;

namespace {
QByteArray hex(char const* digits) { return QByteArray::fromHex(digits); }

// A record, or a block of settings in a record.
QByteArray item(char type, QByteArray const& payload) {
    QByteArray const length = QByteArray().append(char(payload.size() >> 8)).append(char(payload.size()));
    return type + length + payload;
}

QByteArray shadingRecord(QByteArray const& name, QByteArray const& blocks) {
    return item(8, name.leftJustified(9, '\0') + blocks);
}

QByteArray device(QByteArray const& records) {
    return (QByteArray("VYEE\x01") + records).leftJustified(8192, '\xFF');
}

TEST(StartUp, WritesEntriesOfEveryKindInTheirOrder) {
    struct {
        char const* profile;
        QByteArray blocks;
        std::vector<std::pair<char const*, uint32_t>> registers;
        uint64_t writes = 1;
    } const rows[] = {
        // Full entries: a bitfield, whose value counts from its lowest bit; a whole register; a byte; a
        // register whose own width counts.
        {"polynomial",
         item(2, hex("00 00000000 00003780 02 00008000 00000000")) + item(3, hex("36003E00 36021234")) +
             item(2, hex("00 00000000 00003640 02 00000000 00004000"
                         "00 00000000 00003644 00 00000000 0000ABCD"
                         "00 00000000 00003780 02 00008000 00000001")),
         {{"POLY_SC_ENABLE", 0x8000},
          {"P_GR_P0Q0", 0x3E00},
          {"P_GR_P0Q1", 0x1234},
          {"P_RD_P0Q0", 0x4000},
          {"P_RD_P0Q2", 0xABCD}},
         6},
        // Short entries hold page, or width and driver, beside the address.
        {"paged-154", item(3, hex("0210 3E00")), {{"P_GR_P0Q0", 0x3E00}}},
        {"soc-pga", item(4, hex("894F 1142")), {{"EXPOSURE_TARGET", 0x42}}},
        {"firmware-switch-95", item(4, hex("C8BE 4321")), {{"CAM_PGA_PGA_CONTROL", 0x21}}},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.profile);
        Camera const camera = openProfile(row.profile);
        programContents(*camera, device(shadingRecord("DEFAULT", row.blocks)));
        QString error;
        ASSERT_TRUE(camera->replayEeprom({}, &error)) << qPrintable(error);
        for (auto const& [reg, value] : row.registers)
            EXPECT_EQ(readRegister(*camera, reg), value) << reg;
        EXPECT_EQ(camera->registerWrites(), row.writes);
        EXPECT_EQ(camera->deviceOperations(), 0U);
    }
}

TEST(StartUp, TakesTheFirstRecordOrTheNamedOneBehindOthers) {
    Camera const camera = openProfile("polynomial");
    programContents(*camera, device(item(6, "?") + shadingRecord("FIRST", item(3, hex("3600 0001"))) +
                                    shadingRecord("NINECHARS", item(3, hex("3600 0002")))));
    QString error;
    for (auto const& [name, value] : {std::pair<char const*, uint32_t>{nullptr, 1}, {"ninechars", 2}}) {
        ASSERT_TRUE(camera->replayEeprom(QString(name), &error)) << qPrintable(error);
        EXPECT_EQ(readRegister(*camera, "P_GR_P0Q0"), value);
    }
    EXPECT_FALSE(camera->replayEeprom(QStringLiteral("NINE"), &error));
    EXPECT_EQ(error, QStringLiteral("the EEPROM holds no shading registers named \"NINE\""));
}

TEST(StartUp, MalformedContentsChangeNothing) {
    auto const blocks = [](QByteArray const& broken) {
        return device(shadingRecord("A", item(3, hex("3600 3E00")) + broken));
    };
    std::pair<QByteArray, char const*> const rows[] = {
        {QByteArray(8192, '\xFF'), "the EEPROM is not formatted"},
        {device({}), "the EEPROM holds no shading registers"},
        {device(item(8, "DEFAULT")), "EEPROM, offset 5: the record is too short"},
        {blocks(item(2, QByteArray(17, 'x'))), "EEPROM, offset 27: the block's length"},
        {blocks(hex("03 0008 00000000")), "EEPROM, offset 24: the block runs over"},
        {blocks(item(2, hex("00 00000000 00003600 05 00000000 00000001"))),
         "EEPROM, offset 27: there is no register of 5 bytes"},
    };
    for (auto const& [contents, message] : rows) {
        SCOPED_TRACE(message);
        Camera const camera = openProfile("polynomial");
        programContents(*camera, contents);
        QString error;
        EXPECT_FALSE(camera->replayEeprom({}, &error));
        EXPECT_TRUE(error.startsWith(QLatin1String(message))) << qPrintable(error);
        EXPECT_EQ(camera->registerWrites(), 0U);
    }
}
} // namespace
