#include "tests/pictara/program_run.h"

#include <QImage>
#include <tuple>

namespace {
using FailedRun = Program;

TEST_F(FailedRun, IsToldByDialogSummaryAndExitCode) {
    constexpr char kRefused[] = "Calibrate: Error. Are the External sensor data files installed?";
    constexpr char kNotHeld[] = "does not hold the solution"; // though the dialog says that it saved
    QString const plain = smallProfile("polynomial", {}), bridge = smallProfile("eeprom-bridge-71", {});
    std::tuple<QString, QStringList, int, std::vector<char const*>> const rows[] = {
        {plain, {"--level", "0.001"}, 4, {kRefused, "too dark"}},
        {plain, {"--level", "10000"}, 5, {kRefused, "clipped"}},
        {plain, {"--gradient", "-0.5"}, 6, {kRefused, "the lamp is not even"}},
        {"adaptive-72", {"--object"}, 6, {"not flat"}},
        {"wrong-size", {}, 7, {"Error: Incompatible image size.", "1280 x 720 instead of 1920 x 1080"}},
        {plain, {"--fault", "error-12"}, 9, {"Save to EEPROM: Error accessing the EEPROM."}},
        {plain, {"--fault", "error-12@1+"}, 9, {"Save to EEPROM: No EEPROM."}},
        {bridge, {"--fault", "none"}, 9, {kNotHeld}},
        // Behind the bridge the dialog cannot tell silence from absence, and asks for ever.
        {bridge, {"--fault", "no-acknowledge@1+"}, 1, {"stands still before its first step"}},
    };
    for (auto const& [profile, options, exitCode, causes] : rows) {
        SCOPED_TRACE(causes.back());
        ProgramRun const run(QStringList{"--run-all", "--profile", profile} + options);
        EXPECT_EXIT_CODE(run, exitCode);
        bool const isCalibrated = exitCode == 9;
        EXPECT_EQ(run.value("result"), exitCode == 1  ? "not calibrated"
                                       : isCalibrated ? "not saved"
                                                      : "refused");
        EXPECT_EQ(run.after() < 1, isCalibrated) << "what was calibrated is measured";
        EXPECT_EQ(run.value("steps.File_Save_Status") == "Not done yet.", !isCalibrated);
        for (char const* const told : causes)
            EXPECT_TRUE(run.value("cause").contains(told) && run.messages.contains(told))
                << run.messages.toStdString();
        EXPECT_EQ(run.contents("eeprom.bin").size(), 8192);
    }
}

// Also of what Run All still has to end by itself.
TEST_F(FailedRun, AScriptIsCertifiedByWhatItLeavesInTheSensor) {
    std::tuple<QByteArray, int, char const*> const rows[] = {
        {"press Run_All\nwait Prom_Save_Status Done.\n", 0, "pass"},
        {"press Run_All\nwait File_Save_Status Done*\nfault error-12+\nwait Prom_Save_Status Error*\n", 9,
         "not saved"},
        {"press Run_All\nwait Run_All \"Run All Steps\"\nlight 5000 1 0 object\npress Calibrate\n"
         "wait Calibrate_Status Error*\nlight 5000 1 0\n",
         6, "refused"},
        {"press LensCalibSetup\nexpect AE_Status Done.\n", 1, "failed"},
    };
    QString const profile = smallProfile("polynomial", {});
    for (auto const& [script, exitCode, result] : rows) {
        SCOPED_TRACE(result);
        ProgramRun const run({"--script", write("walk%2.txt", script), "--profile", profile});
        EXPECT_EXIT_CODE(run, exitCode);
        EXPECT_EQ(run.value("result"), result);
        EXPECT_TRUE(run.text.contains("walk%2.txt, ")) << run.text.toStdString();
        EXPECT_EQ(run.value("cause").isEmpty(), exitCode == 0);
        EXPECT_EQ(run.value("steps.SETUP_Status"), "Done.");
    }
}

// Pictures of an earlier run are gone.
TEST_F(FailedRun, IsPicturedAmongOutputsOfThisRunAlone) {
    QStringList const good{"--run-all", "--profile", smallProfile()};
    QString const output = path("output");
    auto const pictures = [&] { return QDir(output).entryList({"*.png"}, QDir::Files); };
    EXPECT_EXIT_CODE(ProgramRun(good, output), 0);
    ProgramRun const refused(good + QStringList("--object"), output);
    EXPECT_EXIT_CODE(refused, 6);
    EXPECT_EQ(pictures(), QStringList({"dialog.png", "refused.png"}));
    QColor const object = QImage(refused.file("refused.png")).pixelColor(297, 107);
    EXPECT_TRUE(object.red() > object.green() + 30 && object.blue() > object.green() + 30) << "is marked";
    EXPECT_EXIT_CODE(ProgramRun(good, output), 0);
    EXPECT_EQ(pictures(), QStringList({"after.png", "before.png", "dialog.png"}));
}
} // namespace
