#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/session/command_line.h"
#include "simulator/host/session/words.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace pictara {
namespace {
CommandLine parsed(QString const& arguments) {
    return parseCommandLine(("pictara-sim " + arguments).split(' '));
}

TEST(CommandLine, NamesTheOptionThatIsWrong) {
    std::vector<std::pair<QString, QString>> rows = {{"--run-all --fault error-12@0", "with N from 1"},
                                                     {"--fault error-12", "--run-all"},
                                                     {"--record calls.txt", "--script"},
                                                     {"--script walk.txt --replay-eeprom e.bin", "two runs"},
                                                     {"--append boards.csv", "--run-all"},
                                                     {"--limit 1 --script walk.txt", "GoodCU"},
                                                     {"--colour", "colour"},
                                                     {"polynomial", "polynomial"}};
    for (QString const arguments :
         {"--light 1999", "--light warm", "--light nan", "--level 0", "--gradient 1.5", "--seed -1",
          "--output ", "--run-all --fault error-12@", "--run-all --fault error-12@99999999999999999999",
          "--replay-eeprom e.bin --eeprom f.bin", "--replay calls.txt --seed 2", "--profile"})
        rows.emplace_back(arguments, "--" + arguments.section("--", -1).section(' ', 0, 0));
    for (auto const& [arguments, named] : rows) {
        CommandLine const result = parsed(arguments);
        EXPECT_FALSE(result.options) << arguments.toStdString();
        EXPECT_EQ(result.exitCode, kExitUsage) << arguments.toStdString();
        EXPECT_TRUE(result.text.contains(named)) << result.text.toStdString();
    }
}

TEST(SharedLine, OnlyWhatGoesOnOrIsPolledSharesALine) {
    QByteArray const write = "    vy_writeRegisters 0xA8 0x1E [4b65] = 0";
    QByteArray const read = "    vy_ReadSensorRegStr \"S\" \"\" = 0, ", state = "    setState \"Gamma\" 9";
    EXPECT_EQ(sharedLine(write, "    vy_writeRegisters 0xA8 0x20 [73] = 0"),
              "    vy_writeRegisters 0xA8 0x1E [4b65 73] = 0");
    EXPECT_EQ(sharedLine(write, "    vy_writeRegisters 0xA8 0x22 [73] = 0"), "");
    EXPECT_EQ(sharedLine(write, "    vy_writeRegisters 0xA8 0x20 [73] = 12"), "");
    EXPECT_EQ(sharedLine(read + "0x10", read + "4"), read + "4");
    EXPECT_EQ(sharedLine(state, state), "");
}

// A time of day would make every replay differ; it may lie over two lines and begin at an odd byte.
TEST(ShownLines, HoldNoTimeOfDay) {
    QByteArray const before = QByteArray("aabb ").repeated(12), write = "    vy_writeRegisters 0xA8 ";
    QByteArray groups = before + "00" + QByteArray("2026/11/21 16:42:49").toHex();
    for (int at = before.size() + 4; at < groups.size(); at += 5)
        groups.insert(at, ' ');
    EXPECT_EQ(shownLines(write + "8 [" + groups + "] = 0"),
              (std::vector{write + "8 [" + before + "00tt tttt tttt tttt] = 0",
                           write + "0x28 [tttt tttt tttt tttt tttt tttt] = 0"}));
    auto const longRead = [](QByteArray const& time) {
        return shownLines("    vy_readRegisters 0xA8 0 84 = 0, [" + QByteArray(128, 'f') + time.toHex() +
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
