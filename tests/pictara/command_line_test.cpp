#include "simulator/host/command_line.h"

#include <gtest/gtest.h>

namespace pictara {
namespace {

CommandLine parsed(QStringList arguments) {
    arguments.prepend(QStringLiteral("pictara-sim"));
    return parseCommandLine(arguments);
}

TEST(CommandLine, NamesTheOptionThatIsWrong) {
    struct {
        QStringList arguments;
        char const* named;
    } const rows[] = {
        {{"--light", "1999"}, "--light"},
        {{"--light", "warm"}, "--light"},
        {{"--light", "nan"}, "--light"},
        {{"--level", "0"}, "--level"},
        {{"--gradient", "1.5"}, "--gradient"},
        {{"--seed", "-1"}, "--seed"},
        {{"--falloff", "95%"}, "--falloff"},
        {{"--falloff", "50"}, "75 to 110 in steps of 5"},
        {{"--falloff", "97"}, "75 to 110 in steps of 5"},
        {{"--frames-per-tick", "0"}, "--frames-per-tick"},
        {{"--max-frames", "2.5"}, "--max-frames"},
        {{"--output", ""}, "--output"},
        {{"--run-all", "--fault", "error-12@"}, "--fault"},
        {{"--run-all", "--fault", "error-12@0"}, "with N from 1"},
        {{"--run-all", "--fault", "error-12@99999999999999999999"}, "--fault"},
        {{"--window", "--fault", "error-12"}, "--run-all"},
        {{"--replay-eeprom", "e.bin", "--window"}, "no window"},
        {{"--replay-eeprom", "e.bin", "--eeprom", "f.bin"}, "--eeprom"},
        {{"--run-all", "--stored-record", "DEFAULT"}, "--replay-eeprom"},
        {{"--window", "--record", "calls.txt"}, "--script"},
        {{"--script", "walk.txt", "--window"}, "--window"},
        {{"--run-all", "--window", "--then-good"}, "--then-good"},
        {{"--run-all", "--dark"}, "--dark"},
        {{"--replay", "calls.txt", "--seed", "2"}, "--seed"},
        {{"--replay", "calls.txt", "--script", "walk.txt"}, "--script"},
        {{"--colour"}, "colour"},
        {{"poly-12bit"}, "poly-12bit"},
        {{"--profile"}, "profile"},
    };
    for (auto const& row : rows) {
        CommandLine const result = parsed(row.arguments);
        EXPECT_FALSE(result.options) << row.named;
        EXPECT_EQ(result.exitCode, kExitUsage) << row.named;
        EXPECT_TRUE(result.text.contains(QLatin1String(row.named))) << result.text.toStdString();
    }
}

// What no run of the program shows; the other values are told by their effect.
TEST(CommandLine, ReadsTheLargestSeedAndOneFrameATick) {
    CommandLine const result = parsed({"--seed", "18446744073709551615", "--frames-per-tick", "1"});
    ASSERT_TRUE(result.options) << result.text.toStdString();
    EXPECT_EQ(result.options->seed, 18446744073709551615U);
    EXPECT_EQ(result.options->framesPerTick, 1);
}

TEST(CommandLine, ReadsWhichOperationsAFaultStrikes) {
    struct {
        char const* text;
        std::optional<uint64_t> operation;
        bool forEver;
    } const rows[] = {
        {"error-12", std::nullopt, false},
        {"error-12+", std::nullopt, true},
        {"error-12@1", 1, false},
        {"error-12@18446744073709551615+", UINT64_MAX, true},
    };
    EXPECT_TRUE(parsed({"--run-all", "--fault", "power-cut@0"}).options) << "before the first byte is stored";
    for (auto const& row : rows) {
        CommandLine const result = parsed({"--run-all", "--fault", row.text});
        ASSERT_TRUE(result.options && result.options->fault) << row.text;
        EXPECT_EQ(result.options->fault->name, QStringLiteral("error-12"));
        EXPECT_EQ(result.options->fault->operation, row.operation) << row.text;
        EXPECT_EQ(result.options->fault->forEver, row.forEver) << row.text;
    }
}

TEST(CommandLine, AWindowWinsOverARunAndAsksForASensorOnlyWhenNoneIsNamed) {
    struct {
        QStringList arguments;
        bool runAll, chooseProfile;
    } const rows[] = {
        {{}, false, true},
        {{"--run-all"}, true, false},
        {{"--run-all", "--window"}, false, true},
        {{"--window", "--run-all", "--profile", "soc"}, false, false},
        {{"--run-all", "--screenshot", "a.png"}, false, false},
        {{"--run-all", "--replay-eeprom", "e.bin"}, false, false},
        {{"--run-all", "--script", "walk.txt"}, false, false},
    };
    for (auto const& row : rows) {
        CommandLine const result = parsed(row.arguments);
        ASSERT_TRUE(result.options) << result.text.toStdString();
        EXPECT_EQ(result.options->runAll, row.runAll) << row.arguments.join(' ').toStdString();
        EXPECT_EQ(result.options->chooseProfile, row.chooseProfile) << row.arguments.join(' ').toStdString();
    }
}

} // namespace
} // namespace pictara
