#include "simulator/host/run/run_all.h"
#include "simulator/host/session/command_line.h"

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
        {{"--output", ""}, "--output"},
        {{"--run-all", "--fault", "error-12@"}, "--fault"},
        {{"--run-all", "--fault", "error-12@0"}, "with N from 1"},
        {{"--run-all", "--fault", "error-12@99999999999999999999"}, "--fault"},
        {{"--fault", "error-12"}, "--run-all"},
        {{"--replay-eeprom", "e.bin", "--eeprom", "f.bin"}, "--eeprom"},
        {{"--record", "calls.txt"}, "--script"},
        {{"--script", "walk.txt", "--replay-eeprom", "e.bin"}, "two runs"},
        {{"--flat-field", "flat.raw"}, "--measure-shading"},
        {{"--compare-shading", "a.json"}, "two files"},
        {{"--compare-shading", "a.json", "b.json", "c.json"}, "not an option"},
        {{"--replay", "calls.txt", "--seed", "2"}, "--seed"},
        {{"--colour"}, "colour"},
        {{"polynomial"}, "polynomial"},
        {{"--profile"}, "profile"},
    };
    for (auto const& row : rows) {
        CommandLine const result = parsed(row.arguments);
        EXPECT_FALSE(result.options) << row.named;
        EXPECT_EQ(result.exitCode, kExitUsage) << row.named;
        EXPECT_TRUE(result.text.contains(QLatin1String(row.named))) << result.text.toStdString();
    }
}

TEST(CommandLine, AnyOtherRunWinsOverACalibration) {
    EXPECT_TRUE(parsed({"--run-all"}).options->runAll);
    EXPECT_FALSE(parsed({"--run-all", "--script", "walk.txt"}).options->runAll);
    EXPECT_TRUE(parsed({"--run-all", "--help"}).text.contains(QLatin1String("Camera and light:")));
}

TEST(Verdict, EveryStepHasItsSay) {
    QStringList const done = {"Done.",
                              "Done.",
                              "Done.",
                              "YCbCr calibration. Bypass mode recommended.",
                              " 0.52   (Lower is better.)",
                              "Done: POLY.ini",
                              "No EEPROM."};
    EXPECT_TRUE(isCalibrated(done) && isSaved(done, false));
    EXPECT_FALSE(isSaved(done, true)) << "an EEPROM that is there was not found";
    for (int i = 0; i < done.size(); ++i) {
        QStringList texts = done;
        texts[i] = i == kUniformity ? QStringLiteral(" --   (Lower is better)") : QStringLiteral("Error");
        bool const isOfTheSaves = i == kFileSave || i == kEepromSave;
        EXPECT_EQ(isCalibrated(texts), isOfTheSaves) << i;
        EXPECT_EQ(isSaved(texts, false), !isOfTheSaves) << i;
    }
}
} // namespace
} // namespace pictara
