#include "tests/pictara/program_run.h"
#include "tests/support/measured_folder.h"
#include "tests/support/small_profile.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {
TEST(Program, FlattensTheDefaultSensorAndLeavesItsResults) {
    ProgramRun const run({"--run-all"});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_GE(run.figure("uniformity uncorrected"), 4.0);
    EXPECT_LE(run.figure("uniformity corrected"), 1.0);
    for (char const* picture : {"before.png", "after.png"})
        EXPECT_EQ(QImage(run.file(picture)).size(), QSize(1920, 1080)) << picture;
    EXPECT_FALSE(QImage(run.file("dialog.png")).isNull());
    QString const results = run.value("step File_Save_Status").mid(int(qstrlen("Done: ")));
    EXPECT_TRUE(run.contents(results).contains("[Lens Correction]")) << results.toStdString();

    // Scripts read what the summary tells people, and the host's own figure beside the dialog's.
    run.expectPage();
    QJsonObject const json = run.json();
    for (char const* state : {"uncorrected", "corrected"}) {
        QJsonObject const told = json[QLatin1String(state)].toObject();
        double const dialog = told["dialog_colour_deviation_ab"].toDouble();
        EXPECT_NEAR(dialog, run.figure((QByteArray("uniformity ") + state).constData()), 0.005);
        // Smaller blocks than the dialog's reach farther into the corners; they are noisier, too.
        double const measured = told["picture_colour_deviation_ab"].toDouble();
        EXPECT_NEAR(measured, dialog, 0.3);
    }
    EXPECT_EQ(json["registers"]["solution_registers_written"].toInt(),
              int(run.figure("registers of the solution written")));
    EXPECT_EQ(json["eeprom"]["operations"].toInt(), int(run.figure("EEPROM operations")));
}

TEST(RunReport, TellsTheDialogsOneFigureItsLimitAndItsRating) {
    QTemporaryDir const folder;
    struct {
        double limit;
        int exitCode;
        char const* result;
        char const* rating;
    } const rows[] = {{2, 0, "calibrated", "green"},
                      {0, 8, "calibrated, uniformity beyond the limit", "yellow"},
                      {-2, 8, "calibrated, uniformity beyond the limit", "red"}};
    for (auto const& row : rows) {
        SCOPED_TRACE(row.limit);
        ASSERT_TRUE(writeFile(folder.filePath("settings.ini"),
                              "LensAssist GoodCU for POLY12=" + QByteArray::number(1000 * row.limit) + '\n'));
        ProgramRun const run({"--run-all", "--profile", writeSmallProfile(folder.path())}, folder.path());
        EXPECT_EXIT_CODE(run, row.exitCode);
        EXPECT_EQ(run.value("result").toStdString(), row.result);
        EXPECT_TRUE(run.value("step CU_Status").startsWith(run.value("uniformity corrected") + ' '))
            << run.summary().toStdString();
        QJsonObject const told = run.json()["corrected"].toObject();
        EXPECT_EQ(told["dialog_rating"].toString(), row.rating);
        EXPECT_EQ(told["dialog_colour_deviation_limit_ab"].toDouble(), row.limit);
        QByteArray const page = run.contents("report.html");
        EXPECT_TRUE(page.contains(row.result) && page.contains(row.rating));
    }
}

TEST(ShadingRun, MeasuresALensAndLaysTwoSideBySide) {
    QTemporaryDir const folder;
    QString const first = folder.filePath("a & b.json"), second = folder.filePath("b.json");
    ProgramRun const strong({"--measure-shading", first, "--profile", writeSmallProfile(folder.path())});
    EXPECT_EXIT_CODE(strong, 0);
    strong.expectPage("shading-");
    ProgramRun const again({"--measure-shading", second, "--shading", first, "--light", "4000", "--profile",
                            writeSmallProfile(folder.path())});
    EXPECT_EXIT_CODE(again, 0);
    ProgramRun const both({"--compare-shading", first, second});
    EXPECT_EXIT_CODE(both, 0);
    both.expectPage("shading-");
    QJsonArray const planes = both.json("shading-")["planes"].toArray();
    ASSERT_EQ(planes.size(), 9);
    for (int plane = 3; plane < 6; ++plane) {
        EXPECT_EQ(planes[plane]["colour_temperature_K"].toInt(), 4000);
        EXPECT_LT(std::abs(planes[plane]["largest_difference_percent"].toDouble(-9)), 1.0);
    }
    // Less gain than the first table's is below it.
    ASSERT_TRUE(writeFile(second, R"({"format": "shading-gains-1", "name": "flat", "columns": 2, "rows": 2,
        "illuminants": [{"colour_temperature_K": 4000,
            "red": [1, 1, 1, 1], "green": [1, 1, 1, 1], "blue": [1, 1, 1, 1]}]})"));
    ProgramRun const flat({"--compare-shading", first, second});
    EXPECT_LT(flat.json("shading-")["planes"].toArray().at(3)["largest_difference_percent"].toDouble(), -20);
}

TEST(Program, FlattensMeasuredLensesUnderEachLamp) {
    std::optional<QDir> const folder = measuredFolder();
    if (!folder)
        GTEST_SKIP() << "KESTRA_MEASURED_SHADING names no folder of measured lenses";
    QStringList const modules = folder->entryList({"*.json"}, QDir::Files, QDir::Name);
    ASSERT_FALSE(modules.isEmpty()) << "no measured lenses in " << folder->path().toStdString();
    QTemporaryDir const profileFolder;
    QString const profile = writeChangedProfile(profileFolder.path(), "polynomial", kNoEeprom);
    for (QString const& module : modules) {
        QFile file(folder->filePath(module));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        for (QJsonValue const& illuminant :
             QJsonDocument::fromJson(file.readAll())["illuminants"].toArray()) {
            QString const lamp = QString::number(illuminant["colour_temperature_K"].toInt());
            SCOPED_TRACE(module.toStdString() + " at " + lamp.toStdString());
            ProgramRun const run(
                {"--run-all", "--profile", profile, "--light", lamp, "--shading", file.fileName()});
            EXPECT_EXIT_CODE(run, 0);
            EXPECT_LE(run.figure("uniformity corrected"), 0.7);
            EXPECT_LE(5 * run.figure("largest luminance error against the median block corrected"),
                      run.figure("largest luminance error against the median block uncorrected"));
            EXPECT_LE(run.figure("mean luminance error against the median block corrected"), 3.0);
        }
    }
}

TEST(Program, WhatCannotBeRunEndsWithAMessage) {
    QTemporaryDir const folder;
    QString const malformed = folder.filePath("lens.json"), noPresets = folder.filePath("host.ini");
    QString const blank = folder.filePath("blank.bin"), cut = folder.filePath("cut.bin");
    ASSERT_TRUE(writeFile(malformed, "[Other]\n") && writeFile(noPresets, "[Other]\n"));
    ASSERT_TRUE(writeFile(blank, QByteArray(8192, '\xFF')) && writeFile(cut, QByteArray(8191, '\xFF')));
    QString const table = folder.filePath("table.json");
    struct {
        QStringList arguments;
        char const* told;
    } const rows[] = {
        {{"--profile", "no-such"}, "no-such"},
        {{"--shading", malformed}, "lens.json"},
        {{"--ini", noPresets}, "Lens Calibration Setup"},
        {{"--ini", folder.filePath("none.ini")}, "none.ini"},
        {{"--plugin", folder.filePath("none.so")}, "none.so"},
        {{"--eeprom", cut}, "8191"},
        {{"--eeprom", folder.filePath("none/eeprom.bin")}, "none/eeprom.bin"},
        {{"--eeprom", blank, "--profile", "no-eeprom-25"}, "has no EEPROM for --eeprom"},
        {{"--fault", "error-12", "--profile", "no-eeprom-25"}, "has no EEPROM for --fault"},
        {{"--fault", "error-13"}, "error-12"},
        {{"--replay-eeprom", blank}, "EEPROM"},
        {{"--replay-eeprom", folder.filePath("none.bin")}, "none.bin"},
        {{"--compare-shading", malformed, malformed}, "lens.json"},
        {{"--compare-shading", "none/a.json", malformed}, "none/a.json: cannot be read"},
        {{"--measure-shading", table, "--flat-field", cut}, "cut.bin"},
        {{"--measure-shading", table, "--level", "0.001"}, "too dark"},
        {{"--measure-shading", folder.filePath("none/table.json"), "--light", "5000"}, "none/table.json"},
    };
    for (auto const& row : rows) {
        ProgramRun const run(QStringList(QStringLiteral("--run-all")) + row.arguments);
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages().contains(QLatin1String(row.told))) << run.messages().toStdString();
        EXPECT_FALSE(QFile::exists(table));
    }
}

#ifdef Q_OS_UNIX
// A pipe that nobody writes to would hold the program up, and a rename would put a file in its place.
TEST(Program, WhatIsNoRegularFileIsRefusedAndStays) {
    QTemporaryDir const folder;
    QString const pipe = folder.filePath("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QString const profile = writeSmallProfile(folder.path(), "polynomial", {});
    for (char const* option : {"--eeprom", "--ini", "--shading", "--record", "--profile", "--script",
                               "--replay-eeprom", "--measure-shading", "--plugin"}) {
        SCOPED_TRACE(option);
        ProgramRun const run({"--run-all", "--profile", profile, option, pipe});
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages().contains(pipe) || run.messages().contains("pipe: "))
            << run.messages().toStdString();
        EXPECT_EQ(run.messages().count("pictara-sim: "), 1) << run.messages().toStdString();
        EXPECT_FALSE(QFileInfo(pipe).isFile());
    }
    EXPECT_EXIT_CODE(ProgramRun({"--replay", pipe}), 2);
}
#endif
} // namespace
