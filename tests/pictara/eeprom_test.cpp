#include "tests/pictara/program_run.h"
#include "tests/support/small_profile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>

namespace {
struct EepromProgram : testing::Test {
    QTemporaryDir folder;
    QString const device = folder.filePath("device.bin");

    [[nodiscard]] QString smallProfile(char const* base) const {
        return writeSmallProfile(folder.path(), base, {});
    }
};

// What the results file of a run becomes in a new image, by the tool.
QByteArray importedResults(ProgramRun const& run, QString const& profile) {
    QDir const results(run.file({}));
    QString const image = run.file("imported.bin");
    QStringList const files = results.entryList({"*_*.ini"});
    EXPECT_EQ(files.size(), 1);
    for (QStringList const& command :
         {QStringList{"format"}, QStringList{"import", results.filePath(files.value(0)), "Lens Correction",
                                             "PGA", "--sensor", profile, "--label", "KestraTune"}})
        EXPECT_EQ(QProcess::execute(QStringLiteral(HEADBOARD_IMAGE), QStringList(image) + command), 0);
    return run.contents("imported.bin");
}

// On the raw path and behind the sensor's bus master.
TEST_F(EepromProgram, WhatWasStoredIsWhatCorrects) {
    for (char const* base : {"polynomial", "bus-master-103"}) {
        SCOPED_TRACE(base);
        QString const profile = smallProfile(base);
        ProgramRun const run({"--run-all", "--profile", profile, "--eeprom", device});
        EXPECT_EXIT_CODE(run, 0);
        EXPECT_LE(run.figure("uniformity corrected"), 1.0);
        EXPECT_GT(run.figure("EEPROM bytes written"), 400);
        EXPECT_EQ(run.value("EEPROM"), QStringLiteral("holds the solution"));
        EXPECT_EQ(run.contents(device), importedResults(run, profile))
            << "the tool makes another record of the results than the dialog";

        ProgramRun const replay({"--replay-eeprom", device, "--profile", profile});
        EXPECT_EXIT_CODE(replay, 0);
        // Other frames have other noise.
        for (char const* figure : {"uniformity uncorrected", "uniformity corrected"})
            EXPECT_NEAR(run.figure(figure), replay.figure(figure), 0.1) << figure;
        EXPECT_EQ(replay.value("correction was on when the dialog opened"), QStringLiteral("yes"));
        EXPECT_EQ(replay.figure("registers of the solution written"), 0);
        EXPECT_FALSE(replay.contents("replay-report.html").isEmpty());
        EXPECT_TRUE(replay.contents("report.html").isEmpty()) << "a calibration's would be lost";
        ASSERT_TRUE(QFile::remove(device));
    }
}

TEST_F(EepromProgram, AFaultIsToldByTheDialogTheSummaryAndTheExitCode) {
    struct {
        char const* base;
        char const* fault;
        int exitCode;
        char const* result;
        char const* told;
    } const rows[] = {
        {"polynomial", "error-12", 9, "calibrated, not saved",
         "Prom_Save_Status: Error accessing the EEPROM."},
        {"polynomial", "error-12@1+", 9, "calibrated, not saved", "Prom_Save_Status: No EEPROM."},
        // The dialog says that it saved.
        {"polynomial", "ignored-write+", 9, "calibrated, not saved", "does not hold the solution"},
        {"eeprom-bridge-71", "none", 9, "calibrated, not saved", "does not hold the solution"},
        // Behind the bridge the dialog cannot tell silence from absence, and asks for ever.
        {"eeprom-bridge-71", "no-acknowledge@1+", 1, "not calibrated", "stands still before its first step"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.fault);
        ProgramRun const run({"--run-all", "--profile", smallProfile(row.base), "--fault", row.fault});
        EXPECT_EXIT_CODE(run, row.exitCode);
        EXPECT_EQ(run.value("result").toStdString(), row.result);
        EXPECT_EQ(run.figure("uniformity corrected") < 1, row.exitCode == 9)
            << "what was calibrated is measured";
        for (QString const& told : {run.value("cause"), run.messages()})
            EXPECT_TRUE(told.contains(row.told)) << told.toStdString();
        EXPECT_EQ(run.contents("eeprom.bin").size(), 8192);
    }
}

TEST_F(EepromProgram, KeepsWhatAFailedSaveWrote) {
    ASSERT_TRUE(writeFile(device, QByteArray(8192, '\xFF')));
    // Six bytes are the header's, written when the dialog opens.
    ProgramRun const run({"--run-all", "--profile", smallProfile("polynomial"), "--eeprom", device, "--fault",
                          "power-cut@16+"});
    EXPECT_EXIT_CODE(run, 9);
    QByteArray const kept = run.contents(device);
    EXPECT_TRUE(kept.startsWith("VYEE"));
    EXPECT_LT(kept.mid(5, 10).count('\xFF'), 10);
    EXPECT_EQ(kept.mid(16), QByteArray(8192 - 16, '\xFF'));
}
} // namespace
