#include "tests/pictara/program_run.h"
#include "tests/support/measured_folder.h"
#include "tests/support/small_profile.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

TEST(Program, FlattensTheDefaultSensorAndLeavesItsResults) {
    ProgramRun const run({"--run-all", "--falloff", "100"});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_GE(run.figure("uniformity uncorrected"), 4.0);
    EXPECT_LE(run.figure("uniformity corrected"), 1.0);
    EXPECT_LE(run.figure("luminance error, largest against the centre block, corrected"), 1.5);
    for (char const* picture : {"before.png", "after.png"})
        EXPECT_EQ(QImage(run.file(picture)).size(), QSize(1920, 1080)) << picture;
    EXPECT_FALSE(QImage(run.file("dialog.png")).isNull());
    QString const results = run.value("step File_Save_Status").mid(int(qstrlen("Done: ")));
    QFile file(run.file(results));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << results.toStdString();
    EXPECT_TRUE(file.readAll().contains("[Lens Correction]"));
}

// The colour temperatures at which a module was measured.
QStringList lampsOf(QString const& module) {
    QFile file(module);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList lamps;
    for (QJsonValue const& illuminant : QJsonDocument::fromJson(file.readAll())["illuminants"].toArray())
        lamps << QString::number(illuminant["colour_temperature_K"].toInt());
    return lamps;
}

TEST(Program, FlattensMeasuredLensesUnderEachLamp) {
    std::optional<QDir> const folder = measuredFolder();
    if (!folder)
        GTEST_SKIP() << "KESTRA_MEASURED_SHADING names no folder of measured lenses";
    QStringList const modules = folder->entryList({"*.json"}, QDir::Files, QDir::Name);
    ASSERT_FALSE(modules.isEmpty()) << "no measured lenses in " << folder->path().toStdString();
    QTemporaryDir const profileFolder;
    QString const profile = writeChangedProfile(profileFolder.path(), "poly-12bit", kNoEeprom);
    for (QString const& module : modules) {
        for (QString const& lamp : lampsOf(folder->filePath(module))) {
            SCOPED_TRACE(module.toStdString() + " at " + lamp.toStdString());
            ProgramRun const run(
                {"--run-all", "--profile", profile, "--light", lamp, "--shading", folder->filePath(module)});
            EXPECT_EXIT_CODE(run, 0);
            EXPECT_LE(run.figure("uniformity corrected"), 0.7);
            EXPECT_LE(5 * run.figure("luminance error, largest against the median block, corrected"),
                      run.figure("luminance error, largest against the median block, uncorrected"));
            EXPECT_LE(run.figure("luminance error, mean against the median block, corrected"), 3.0);
        }
    }
}

TEST(Program, EqualSeedsGiveEqualRuns) {
    QTemporaryDir const folder;
    QStringList const arguments{"--run-all", "--profile", writeSmallProfile(folder.path()), "--seed", "5"};
    ProgramRun const first(arguments), second(arguments);
    EXPECT_EXIT_CODE(first, 0);
    EXPECT_EQ(first.summary(), second.summary());
    EXPECT_EQ(QImage(first.file("after.png")), QImage(second.file("after.png")));
}

TEST(Program, ARunThatTakesTooLongIsGivenUp) {
    ProgramRun const late({"--run-all", "--max-frames", "50"});
    EXPECT_EXIT_CODE(late, 3);
    EXPECT_LE(late.figure("frames"), 50);
}

TEST(Program, AWindowWinsOverARunAndEndsWhenItIsClosed) {
    QTemporaryDir const folder;
    QString const screenshot = folder.filePath("window.png");
    ProgramRun const run({"--run-all", "--window", "--profile",
                          writeSmallProfile(folder.path(), "poly-12bit", {}), "--screenshot", screenshot});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_TRUE(run.summary().isEmpty());
    EXPECT_FALSE(QImage(screenshot).isNull());
    EXPECT_TRUE(run.contents("eeprom.bin").startsWith("VYEE")) << "the dialog formats a blank one at once";
}

TEST(Program, WhatCannotBeRunEndsWithAMessage) {
    QTemporaryDir const folder;
    QString const malformed = folder.filePath("lens.json"), noPresets = folder.filePath("host.ini");
    QString const blank = folder.filePath("blank.bin"), cut = folder.filePath("cut.bin");
    ASSERT_TRUE(writeFile(malformed, "[Other]\n") && writeFile(noPresets, "[Other]\n"));
    ASSERT_TRUE(writeFile(blank, QByteArray(8192, '\xFF')) && writeFile(cut, QByteArray(8191, '\xFF')));
    struct {
        QStringList arguments;
        char const* told;
    } const rows[] = {
        {{"--light", "1"}, "--light"},
        {{"--profile", "no-such"}, "no-such"},
        {{"--shading", malformed}, "lens.json"},
        {{"--ini", noPresets}, "Lens Calibration Setup"},
        {{"--ini", folder.filePath("none.ini")}, "none.ini"},
        {{"--plugin", folder.filePath("none.so")}, "none.so"},
        {{"--settings", folder.path()}, "settings"},
        {{"--eeprom", cut}, "8191"},
        {{"--eeprom", folder.filePath("none/eeprom.bin")}, "none/eeprom.bin"},
        {{"--eeprom", blank, "--profile", "kind25"}, "has no EEPROM for --eeprom"},
        {{"--fault", "error-12", "--profile", "kind25"}, "has no EEPROM for --fault"},
        {{"--fault", "error-13"}, "error-12"},
        {{"--replay-eeprom", blank}, "EEPROM"},
        {{"--replay-eeprom", folder.filePath("none.bin")}, "none.bin"},
    };
    for (auto const& row : rows) {
        ProgramRun const run(QStringList(QStringLiteral("--run-all")) + row.arguments);
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages().contains(QLatin1String(row.told))) << run.messages().toStdString();
    }
}

#ifdef Q_OS_UNIX
// A pipe that nobody writes to would hold the program up, and a rename would put a file in its place.
TEST(Program, WhatIsNoRegularFileIsRefusedAndStays) {
    QTemporaryDir const folder;
    QString const pipe = folder.filePath("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QString const profile = writeSmallProfile(folder.path(), "poly-12bit", {});
    for (char const* option : {"--eeprom", "--settings", "--ini", "--shading", "--record", "--profile",
                               "--script", "--replay-eeprom", "--measure-shading", "--plugin"}) {
        SCOPED_TRACE(option);
        ProgramRun const run({"--run-all", "--profile", profile, option, pipe});
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages().contains(pipe) || run.messages().contains("pipe: "))
            << run.messages().toStdString();
        EXPECT_EQ(run.messages().count("pictara-sim: "), 1) << run.messages().toStdString();
        EXPECT_FALSE(QFileInfo(pipe).isFile());
    }
    EXPECT_EXIT_CODE(ProgramRun({"--replay", pipe}), 2);
    // The conditions beside an EEPROM are read, too.
    QString const eeprom = folder.filePath("eeprom.bin");
    ASSERT_EXIT_CODE(ProgramRun({"--run-all", "--profile", profile, "--eeprom", eeprom}), 0);
    ASSERT_TRUE(QFile::remove(eeprom + ".conditions") && QFile::rename(pipe, eeprom + ".conditions"));
    EXPECT_EXIT_CODE(ProgramRun({"--replay-eeprom", eeprom, "--profile", profile}), 2);
}
#endif

} // namespace
