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

QByteArray contentsOf(QString const& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct RecordingProgram : testing::Test {
    QString const recorded = QStringLiteral(KESTRA_SOURCE_DIR "/tests/pictara/recordings/default-run.txt");
    QTemporaryDir folder;
    QString const copy = folder.filePath("copy.txt");
    QString const script = folder.filePath("walk.txt");
};

TEST_F(RecordingProgram, TheDefaultRunBehavesAsRecorded) {
    ProgramRun const run({"--replay", recorded});
    ASSERT_EXIT_CODE(run, 0) << run.messages().toStdString() << kRenew;
}

TEST_F(RecordingProgram, NothingThatTheHostAsksForItsReportIsTakenForThePlugIns) {
    ASSERT_EXIT_CODE(
        ProgramRun({"--run-all", "--profile", writeSmallProfile(folder.path()), "--record", copy}), 0);
    ProgramRun const replay({"--replay", copy});
    EXPECT_EXIT_CODE(replay, 0);
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
        QRegularExpression const told(QStringLiteral(":(\\d+): the replay differs.*recorded: ([^\n]*)"),
                                      QRegularExpression::DotMatchesEverythingOption);
        auto const match = told.match(run.messages());
        QList<QByteArray> const lines = changed.split('\n');
        ASSERT_TRUE(match.hasMatch()) << run.messages().toStdString();
        EXPECT_EQ(QString::fromUtf8(lines.value(match.captured(1).toInt() - 1).trimmed()), match.captured(2));
    }
}

// What is no script ends with 2, what cannot be done, or was not seen, with 1.
TEST_F(RecordingProgram, WhatCannotBeReplayedIsToldWithItsLine) {
    QByteArray const sensor = "profile no-eeprom-25\n";
    struct {
        QByteArray contents;
        int code;
        char const* told = "copy.txt:";
    } const rows[] = {
        {"[Other]\n", 2, "no command"},
        {"profile polynomial\nseed one\nopen\n", 2, "copy.txt:2: "},
        {"eeprom blank\neeprom 8190 ffffff\nopen\n", 2, "copy.txt:2: "},
        {"light nan\nopen\n", 2, "copy.txt:1: "},
        {"open\nseed 1\n", 2, "copy.txt:2: "},
        {"profile no-such\nopen\n", 2, "no-such"},
        {sensor + "tick", 1},
        {sensor + "close", 1},
        {sensor + "frame 1", 1},
        {sensor + "show", 1},
        {sensor + "press AE", 1},
        {sensor + "open\n    x", 1},
        {sensor + "open\nlight 5000 1e9 0", 2},
        {sensor + "open\nfault", 2},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.contents.constData());
        ASSERT_TRUE(writeFile(copy, row.contents + '\n'));
        ProgramRun const run({"--replay", copy});
        EXPECT_EXIT_CODE(run, row.code);
        EXPECT_TRUE(run.messages().contains(QLatin1String(row.told))) << run.messages().toStdString();
    }
}

constexpr char kCalibrationByHand[] = R"(
light 3200
expect SETUP_Status "Not done yet."
set FallOff 80%
set Prom_Label "By hand"
press LensCalibSetup
wait SETUP_Status Done. 30
press AE
wait AE_Status Done. 300
press AWB
wait AWB_Status Done. 300
press Calibrate
expect Calibrate_Status "In progress*"
wait Calibrate_Status Done. 300
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
TEST_F(RecordingProgram, AScriptWalksThroughACalibrationAndItsRecordingTellsAll) {
    QString const device = folder.filePath("device.bin"),
                  profile = writeSmallProfile(folder.path(), "polynomial", {});
    ASSERT_TRUE(writeFile(device, QByteArray::fromHex("5659454501ff") + QByteArray(8186, '\x11')));
    ASSERT_TRUE(writeFile(script, kCalibrationByHand));
    ProgramRun const run(
        {"--script", script, "--profile", profile, "--eeprom", device, "--seed", "7", "--record", copy});
    ASSERT_EXIT_CODE(run, 0) << run.messages().toStdString();
    EXPECT_TRUE(run.contents("dialog.png").startsWith("\x89PNG"));
    QJsonObject const told = run.json("script-");
    EXPECT_GT(told["uncorrected"]["dialog_colour_deviation_ab"].toDouble(), 4.0);
    EXPECT_LT(told["corrected"]["dialog_colour_deviation_ab"].toDouble(1e9), 2.0);
    QByteArray const recording = contentsOf(copy);
    EXPECT_FALSE(recording.contains(run.file({}).toUtf8())) << "names the folder of one machine";
    EXPECT_FALSE(recording.contains("COARSE_INTEGRATION_TIME")) << "the host's own exposure loop is recorded";
    ProgramRun const replay({"--replay", copy});
    EXPECT_EXIT_CODE(replay, 0);
}

TEST_F(RecordingProgram, AScriptEndsAtTheLineThatFails) {
    QString const profile = writeSmallProfile(folder.path());
    struct {
        char const* line;
        int code;
        char const* told;
    } const rows[] = {
        {"expect SETUP_Status Done", 1, "shows \"Done.\", not \"Done\""},
        {"expect disabled Run_All", 1, "is not disabled"},
        {"press No_Such", 1, "has no \"No_Such\""},
        {"press Enable_LC\nexpect SETUP_Status Done.\nexpect disabled Enable_LC", 1, ":5: "},
        {"set FallOff 97%", 1, "it offers"},
        {"wait AE_Status Done. 4", 3, "after 4 frames"},
        {"push AE", 2, ":3: there is no command"},
        {"# press\n\npress # AE", 2, ":5: it must be: press NAME"},
        {"set FallOff 80 %", 2, "in quotes"},
        {"light 1999", 2, "light KELVIN"},
        {"seed 2", 2, "belongs before"},
        {"frames 0", 2, "frames N"},
        {"wait AE_Status Done. soon", 2, "[FRAMES]"},
        {"expect AE_Status \"Done.", 2, "quote"},
        {"fault error-12", 1, "no EEPROM"},
        {"fault error-12@0", 2, "N from 1"},
        {"fault error-13", 2, "N from 1"},
        {"register NO_SUCH 4", 1, "does not take that: NO_SUCH"},
        {"register COARSE_INTEGRATION_TIME long", 2, "register NAME VALUE"},
    };
    for (auto const& row : rows) {
        ASSERT_TRUE(writeFile(script, QByteArray("press LensCalibSetup\nframes 3\n") + row.line));
        ProgramRun const run({"--script", script, "--profile", profile});
        EXPECT_EXIT_CODE(run, row.code);
        EXPECT_TRUE(run.messages().contains(script + ':') && run.messages().contains(QLatin1String(row.told)))
            << run.messages().toStdString();
    }
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
        ProgramRun const replay({"--replay", copy});
        EXPECT_EXIT_CODE(replay, 0);
    }
}
#endif
} // namespace
