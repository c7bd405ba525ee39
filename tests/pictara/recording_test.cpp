#include "tests/pictara/program_run.h"

#include <QRegularExpression>
#include <csignal>
#include <tuple>

namespace {
constexpr char kRenew[] = "If the change is meant: pictara-sim --run-all --output $(mktemp -d) --record "
                          "tests/pictara/recordings/default-run.txt";

struct RecordingProgram : Program {
    QString const recorded = KESTRA_SOURCE_DIR "/tests/pictara/recordings/default-run.txt";
    QString const copy = path("copy.txt");
};

TEST_F(RecordingProgram, TheDefaultRunBehavesAsRecorded) {
    ProgramRun const run({"--replay", recorded});
    EXPECT_EXIT_CODE(run, 0) << kRenew;
}

TEST_F(RecordingProgram, ADifferenceIsNamedByItsLine) {
    QByteArray const whole = contentsOf(recorded), call = "    vy_setMode 2 8 = 0\n";
    QByteArray const rows[][3] = {
        {"\"LensAssist Falloff for POLY12\" 95 = 95", "\"LensAssist Falloff for POLY12\" 95 = 80", "95 = 80"},
        {call, "    vy_setMode 9 9 = 0\n" + call, "vy_setMode 9 9"}, // no more made
        {call, "", "replayed: vy_setMode 2 8 = 0"},                  // not made then
        {"press Run_All", "press No_Such", "replayed: the dialog has no"},
        // Another state at the beginning.
        {"\nopen", "\nsetting \"LensAssist Dir=<output>/x\"\nopen",
         "recorded: readTextSetting \"LensAssist Dir\" 0x104 \"\" = \"\""},
    };
    for (auto const& [from, to, told] : rows) {
        SCOPED_TRACE(told.constData());
        int const at = whole.indexOf(from);
        ASSERT_GT(at, 0) << "the recording was renewed: choose another line";
        QByteArray const changed = QByteArray(whole).replace(at, from.size(), to);
        ProgramRun const run({"--replay", write("copy.txt", changed)});
        EXPECT_EXIT_CODE(run, 1);
        EXPECT_TRUE(run.messages.contains(QString::fromUtf8(told))) << run.messages.toStdString();
        // The message's line is the one of the file that is shown as recorded.
        static QRegularExpression const line(":(\\d+): the replay differs(?:.|\n)*recorded: ([^\n]*)");
        auto const match = line.match(run.messages);
        ASSERT_TRUE(match.hasMatch()) << run.messages.toStdString();
        EXPECT_EQ(changed.split('\n').value(match.captured(1).toInt() - 1).trimmed(),
                  match.captured(2).toUtf8());
    }
}

constexpr char kCalibrationByHand[] = R"(
light 3200 0.001
expect SETUP_Status "Not done yet."
set FallOff 100%
set Prom_Label "By hand"
press LensCalibSetup
wait SETUP_Status Done. 30
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
    QString const script = write("walk.txt", kCalibrationByHand),
                  device =
                      write("device.bin", QByteArray::fromHex("5659454501ff") + QByteArray(8186, '\x11'));
    ProgramRun const run({"--script", script, "--eeprom", device, "--seed", "7", "--record", copy});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_TRUE(run.contents("dialog.png").startsWith("\x89PNG"));
    EXPECT_GE(run.before(), 4.0);
    EXPECT_LE(run.after(), 1.0);
    // A solution without any falloff leaves all blocks as bright as the centre.
    EXPECT_LE(run.figure("corrected.luminance_error_largest_against_centre_percent"), 1.5);
    QByteArray const recording = contentsOf(copy);
    EXPECT_FALSE(recording.contains(run.file({}).toUtf8())) << "names the folder of one machine";
    EXPECT_FALSE(recording.contains("COARSE_INTEGRATION_TIME")) << "the host's own exposure loop is recorded";
    EXPECT_EXIT_CODE(ProgramRun({"--replay", copy}), 0);
}

// What is no script ends with 2, what cannot be done, or was not seen, with 1, and a wait in vain with 3.
TEST_F(RecordingProgram, EndsAtTheLineThatFails) {
    QByteArray const begun = "press LensCalibSetup\nframes 3\n", sensor = "profile no-eeprom-25\n";
    auto const expectEnd = [&](QString const& option, QByteArray const& lines, int code, char const* told) {
        SCOPED_TRACE(lines.constData());
        QStringList arguments{option, write("walk.txt", lines)};
        if (option == "--script")
            arguments << "--profile" << smallProfile();
        ProgramRun const run(arguments);
        EXPECT_EXIT_CODE(run, code);
        EXPECT_TRUE(run.messages.contains("walk.txt:") && run.messages.contains(told))
            << run.messages.toStdString();
    };
    for (auto const& [lines, code, told] : std::initializer_list<std::tuple<QByteArray, int, char const*>>{
             {"expect SETUP_Status Done", 1, "shows \"Done.\", not \"Done\""},
             {"expect disabled Run_All", 1, "is not disabled"},
             {"press Enable_LC\nexpect SETUP_Status Done.\nexpect disabled Enable_LC", 1, ":5: "},
             {"set FallOff 97%", 1, "it offers"},
             {"wait AE_Status Done. 4", 3, "after 4 frames"},
             {"push AE", 2, ":3: there is no command"},
             {"# press\n\npress # AE", 2, ":5: it must be: press NAME"},
             {"light 1999", 2, "light KELVIN"},
             {"seed 2", 2, "belongs before"},
             {"wait AE_Status Done. soon", 2, "[FRAMES]"},
             {"fault error-12", 1, "no EEPROM"},
             {"fault error-13", 2, "N from 1"},
             {"register NO_SUCH 4", 1, "does not take that: NO_SUCH"},
             {"register COARSE_INTEGRATION_TIME long", 2, "register NAME VALUE"}})
        expectEnd("--script", begun + lines, code, told);
    expectEnd("--script", "light nan\nopen", 2, ":1: ");
    expectEnd("--script", "eeprom blank\neeprom 8190 ffffff\nopen", 2, ":2: ");
    for (char const* line : {"tick", "close", "show"})
        expectEnd("--replay", sensor + line, 1, ":2: ");
    expectEnd("--replay", sensor + "open\n    x", 1, ":3: ");
    expectEnd("--replay", "[Other]", 2, "no command");
    EXPECT_EXIT_CODE(ProgramRun({"--replay", write("walk.txt", "profile no-such\nopen")}), 2);
}

// The dialog, which nobody opened, opens with the first frame and asks for the EEPROM in vain.
TEST_F(RecordingProgram, AFaultAtAScriptsBeginningStrikesTheFirstOperation) {
    QString const script =
        write("walk.txt", "fault no-acknowledge+\nframe\nframes 3\nexpect Prom_Save_Status \"No EEPROM.\"\n");
    EXPECT_EXIT_CODE(ProgramRun({"--script", script, "--profile", smallProfile("polynomial", {})}), 0);
}

#ifdef Q_OS_UNIX
TEST_F(RecordingProgram, AnInterruptedRunLeavesWholeFiles) {
    QString const output = path("out");
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL); // what a job in the background ignores its programs would ignore, too
        QProcess process;
        process.start(PICTARA_SIM, {"--run-all", "--profile", smallProfile("polynomial", {}), "--output",
                                    output, "--record", copy});
        // The first line of progress: frames are on their way.
        ASSERT_TRUE(process.waitForReadyRead(60'000));
        ASSERT_EQ(::kill(pid_t(process.processId()), signal), 0);
        ASSERT_TRUE(process.waitForFinished(60'000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 130) << process.readAllStandardError().toStdString();
        EXPECT_EQ(contentsOf(output + "/eeprom.bin").size(), 8192);
        EXPECT_TRUE(contentsOf(output + "/settings.ini").endsWith('\n'));
        EXPECT_EQ(QDir(output).entryList(QDir::Files), QStringList({"eeprom.bin", "settings.ini"}));
        EXPECT_EXIT_CODE(ProgramRun({"--replay", copy}), 0);
    }
}
#endif
} // namespace
