#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/session/words.h"

#include <gtest/gtest.h>

namespace pictara {
namespace {
TEST(SharedLine, OnlyWhatGoesOnOrIsPolledSharesALine) {
    QByteArray const write = "    vy_writeRegisters 0xA8 0x1E [4b65] = 0";
    struct {
        QByteArray first, second, shared;
    } const rows[] = {
        {write, "    vy_writeRegisters 0xA8 0x20 [73] = 0", "    vy_writeRegisters 0xA8 0x1E [4b65 73] = 0"},
        {write, "    vy_writeRegisters 0xA8 0x22 [73] = 0", ""},
        {write, "    vy_writeRegisters 0xA8 0x20 [73] = 12", ""},
        {"    vy_ReadSensorRegStr \"S\" \"\" = 0, 0x10", "    vy_ReadSensorRegStr \"S\" \"\" = 0, 4",
         "    vy_ReadSensorRegStr \"S\" \"\" = 0, 4"},
        {"    setState \"Gamma\" 9", "    setState \"Gamma\" 9", ""},
    };
    for (auto const& row : rows)
        EXPECT_EQ(sharedLine(row.first, row.second), row.shared) << row.second.constData();
}

// A time of day would make every replay differ; it may lie over two lines and begin at an odd byte.
TEST(ShownLines, HoldNoTimeOfDay) {
    QByteArray const time = QByteArray("\0"
                                       "2026/11/21 16:42:49",
                                       20)
                                .toHex();
    QByteArray groups = QByteArray("aabb ").repeated(12);
    for (int i = 0; i < time.size(); i += 4)
        groups += time.mid(i, 4) + ' ';
    groups.chop(1);
    EXPECT_EQ(
        shownLines("    vy_writeRegisters 0xA8 8 [" + groups + "] = 0"),
        (std::vector<QByteArray>{"    vy_writeRegisters 0xA8 8 [" + QByteArray("aabb ").repeated(12) +
                                     "00tt tttt tttt tttt] = 0",
                                 "    vy_writeRegisters 0xA8 0x28 [tttt tttt tttt tttt tttt tttt] = 0"}));
    auto const longRead = [&](QByteArray text) {
        return shownLines("    vy_readRegisters 0xA8 0 84 = 0, [" + QByteArray(128, 'f') + text.toHex() +
                          ']');
    };
    EXPECT_EQ(longRead("2026/11/21 16:42:49"), longRead("2027/01/01 00:00:00"));
    EXPECT_NE(longRead("2026/11/21 16:42:49"), longRead("2026/11/21 16-42-49"));
}

// A recording is read again: whatever was typed must come out as it went in.
TEST(Words, AnyTextSurvivesItsLine) {
    QStringList const words = {"set", "Save_Dir", "C:\\Prüf \"stand\" 1\\", "", "#1", "\"", "a#b"};
    QString error;
    EXPECT_EQ(wordsOf(lineOf(words) + " # comment", &error), words);
    EXPECT_FALSE(wordsOf("set Save_Dir \"open", &error));
}
} // namespace
} // namespace pictara
