#include "tests/pictara/program_run.h"
#include "tests/support/small_profile.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <csignal>
#include <gtest/gtest.h>

namespace {
constexpr char kRenew[] = "If the change is meant: pictara-sim --run-all --output $(mktemp -d) --record "
                          "tests/pictara/recordings/default-run.txt";

struct RecordingProgram : testing::Test {
    QString const recorded = QStringLiteral(KESTRA_SOURCE_DIR "/tests/pictara/recordings/default-run.txt");
    QTemporaryDir folder;
    QString const copy = folder.filePath("copy.txt");
    QString const script = folder.filePath("walk.txt");
};

TEST_F(RecordingProgram, TheDefaultRunBehavesAsRecorded) {
    ProgramRun const run({"--replay", recorded});
    EXPECT_EXIT_CODE(run, 0) << kRenew;
}

TEST_F(RecordingProgram, NothingThatTheHostAsksForItsReportIsTakenForThePlugIns) {
    QString const profile = writeSmallProfile(folder.path());
    EXPECT_EXIT_CODE(ProgramRun({"--run-all", "--profile", profile, "--record", copy}), 0);
    EXPECT_EXIT_CODE(ProgramRun({"--replay", copy}), 0);
}

TEST_F(RecordingProgram, ADifferenceIsNamedByItsLine) {
    QByteArray const whole = contentsOf(recorded);
    QByteArray const result = "\"LensAssist Falloff for POLY12\" 95 = 95";
    QByteArray const call = "    vy_setMode 2 8 = 0\n", input = "press Run_All";
    struct {
        char const* fault;
        QByteArray from, to, told;
    } const rows[] = {
        {"another result", result, QByteArray(result).replace("= 95", "= 80"), "95 = 80"},
        {"a call that is no more made", call, "    vy_setMode 9 9 = 0\n" + call, "vy_setMode 9 9"},
        {"a call that was not made then", call, "", "replayed: vy_setMode 2 8 = 0"},
        {"an input that cannot be given", input, "press No_Such", "replayed: the dialog has no"},
        {"another state at the beginning", "\nopen", "\nsetting \"LensAssist Dir=<output>/x\"\nopen",
         "recorded: readTextSetting \"LensAssist Dir\" 0x104 \"\" = \"\""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.fault);
        int const at = whole.indexOf(row.from);
        ASSERT_GT(at, 0) << "the recording was renewed: choose another line";
        QByteArray changed = whole;
        changed.replace(at, row.from.size(), row.to);
        ASSERT_TRUE(writeFile(copy, changed));
        ProgramRun const run({"--replay", copy});
        EXPECT_EXIT_CODE(run, 1);
        EXPECT_TRUE(run.messages().contains(QString::fromUtf8(row.told))) << run.messages().toStdString();
        // The message's line is the one of the file that is shown as recorded.
        static QRegularExpression const told(":(\\d+): the replay differs(?:.|\n)*recorded: ([^\n]*)");
        auto const match = told.match(run.messages());
        QList<QByteArray> const lines = changed.split('\n');
        ASSERT_TRUE(match.hasMatch()) << run.messages().toStdString();
        EXPECT_EQ(QString::fromUtf8(lines.value(match.captured(1).toInt() - 1).trimmed()), match.captured(2));
    }
}

constexpr char kCalibrationByHand[] = R"(
light 3200 0.001
expect SETUP_Status "Not done yet."
set FallOff 100%
set Prom_Label "By hand"
press LensCalibSetup
wait SETUP_Status Done. 30
press AE
wait AE_Status Done. 300
press AWB
wait AWB_Status Done. 300
press Calibrate
expect Calibrate_Status "In progress*"
wait Calibrate_Status Error* 300     # too dark
light 5000 1
press AE
wait AE_Status Done.
press AWB
wait AWB_Status Done.
press Calibrate
wait CU_Status "*.*better.*"
press File_Save
wait File_Save_Status "Done: *.ini" 30
press Prom_Save
tick 2
expect Prom_Save_Status Done.
press Enable_LC           # off
expect enabled Run_All
frames 4
screenshot dialog.png     # in the output folder
)";

// Light, EEPROM and settings at the beginning are the recording's, whatever became of the files.
TEST_F(RecordingProgram, AScriptWalksPastARefusalToACalibrationAndItsRecordingTellsAll) {
    QString const device = folder.filePath("device.bin");
    ASSERT_TRUE(writeFile(device, QByteArray::fromHex("5659454501ff") + QByteArray(8186, '\x11')));
    ASSERT_TRUE(writeFile(script, kCalibrationByHand));
    ProgramRun const run({"--script", script, "--eeprom", device, "--seed", "7", "--record", copy});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_TRUE(run.contents("dialog.png").startsWith("\x89PNG"));
    EXPECT_GE(run.figure("uniformity uncorrected"), 4.0);
    EXPECT_LE(run.figure("uniformity corrected"), 1.0);
    // A solution without any falloff leaves all blocks as bright as the centre.
    EXPECT_LE(run.figure("largest luminance error against the centre block corrected"), 1.5);
    QByteArray const recording = contentsOf(copy);
    EXPECT_FALSE(recording.contains(run.file({}).toUtf8())) << "names the folder of one machine";
    EXPECT_FALSE(recording.contains("COARSE_INTEGRATION_TIME")) << "the host's own exposure loop is recorded";
    EXPECT_EXIT_CODE(ProgramRun({"--replay", copy}), 0);
}

// What is no script ends with 2, what cannot be done, or was not seen, with 1, and a wait in vain with 3.
TEST_F(RecordingProgram, EndsAtTheLineThatFails) {
    QString const profile = writeSmallProfile(folder.path());
    QByteArray const begun = "press LensCalibSetup\nframes 3\n", sensor = "profile no-eeprom-25\n";
    struct {
        QByteArray lines;
        int code;
        char const* told;
        char const* option = "--script";
    } const rows[] = {
        {begun + "expect SETUP_Status Done", 1, "shows \"Done.\", not \"Done\""},
        {begun + "expect disabled Run_All", 1, "is not disabled"},
        {begun + "press No_Such", 1, "has no \"No_Such\""},
        {begun + "press Enable_LC\nexpect SETUP_Status Done.\nexpect disabled Enable_LC", 1, ":5: "},
        {begun + "set FallOff 97%", 1, "it offers"},
        {begun + "wait AE_Status Done. 4", 3, "after 4 frames"},
        {begun + "push AE", 2, ":3: there is no command"},
        {begun + "# press\n\npress # AE", 2, ":5: it must be: press NAME"},
        {begun + "set FallOff 80 %", 2, "in quotes"},
        {begun + "light 1999", 2, "light KELVIN"},
        {begun + "seed 2", 2, "belongs before"},
        {begun + "frames 0", 2, "frames N"},
        {begun + "wait AE_Status Done. soon", 2, "[FRAMES]"},
        {begun + "expect AE_Status \"Done.", 2, "quote"},
        {begun + "fault error-12", 1, "no EEPROM"},
        {begun + "fault error-12@0", 2, "N from 1"},
        {begun + "fault error-13", 2, "N from 1"},
        {begun + "register NO_SUCH 4", 1, "does not take that: NO_SUCH"},
        {begun + "register COARSE_INTEGRATION_TIME long", 2, "register NAME VALUE"},
        {"seed one\nopen", 2, ":1: "},
        {"light nan\nopen", 2, ":1: "},
        {"eeprom blank\neeprom 8190 ffffff\nopen", 2, ":2: "},
        {"[Other]", 2, "no command", "--replay"},
        {sensor + "tick", 1, ":2: ", "--replay"},
        {sensor + "close", 1, ":2: ", "--replay"},
        {sensor + "frame 1", 1, ":2: ", "--replay"},
        {sensor + "show", 1, ":2: ", "--replay"},
        {sensor + "press AE", 1, ":2: ", "--replay"},
        {sensor + "open\n    x", 1, ":3: ", "--replay"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.lines.constData());
        ASSERT_TRUE(writeFile(script, row.lines));
        QStringList arguments{row.option, script};
        if (arguments[0] == "--script")
            arguments += {"--profile", profile};
        ProgramRun const run(arguments);
        EXPECT_EXIT_CODE(run, row.code);
        EXPECT_TRUE(run.messages().contains("walk.txt:") && run.messages().contains(row.told))
            << run.messages().toStdString();
    }
    ASSERT_TRUE(writeFile(script, "profile no-such\nopen"));
    EXPECT_EXIT_CODE(ProgramRun({"--replay", script}), 2);
}

// The dialog, which nobody opened, opens with the first frame and asks for the EEPROM in vain.
TEST_F(RecordingProgram, AFaultAtAScriptsBeginningStrikesTheFirstOperation) {
    ASSERT_TRUE(writeFile(
        script, "fault no-acknowledge+\nframe\nframes 3\nexpect Prom_Save_Status \"No EEPROM.\"\n"));
    ProgramRun const run(
        {"--script", script, "--profile", writeSmallProfile(folder.path(), "polynomial", {})});
    EXPECT_EXIT_CODE(run, 0) << run.messages().toStdString();
}

#ifdef Q_OS_UNIX
TEST_F(RecordingProgram, AnInterruptedRunLeavesWholeFiles) {
    QString const output = folder.filePath("out"), settings = output + "/settings.ini";
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        QProcess process;
        process.start(QStringLiteral(PICTARA_SIM),
                      {"--run-all", "--profile", writeSmallProfile(folder.path(), "polynomial", {}),
                       "--output", output, "--record", copy});
        // The first line of progress: frames are on their way.
        ASSERT_TRUE(process.waitForReadyRead(60'000));
        ASSERT_EQ(::kill(pid_t(process.processId()), signal), 0);
        ASSERT_TRUE(process.waitForFinished(60'000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 130) << process.readAllStandardError().toStdString();
        EXPECT_EQ(QFile(output + "/eeprom.bin").size(), 8192);
        EXPECT_TRUE(contentsOf(settings).endsWith('\n'));
        EXPECT_EQ(QDir(output).entryList(QDir::Files), QStringList({"eeprom.bin", "settings.ini"}));
        EXPECT_EXIT_CODE(ProgramRun({"--replay", copy}), 0);
    }
}
#endif
} // namespace
