#include "tests/pictara/program_run.h"
#include "tests/support/small_profile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>
#include <cmath>
#include <gtest/gtest.h>

namespace {

QJsonObject summaryOf(ProgramRun const& run, QString const& kind = {}) {
    return QJsonDocument::fromJson(run.contents(kind + "summary.json")).object();
}

void expectPage(ProgramRun const& run, QString const& kind = {}) {
    QByteArray const page = run.contents(kind + "report.html");
    EXPECT_GT(page.size(), 1000);
    EXPECT_LT(page.size(), 2'000'000);
    QXmlStreamReader reader(page);
    while (!reader.atEnd())
        reader.readNext();
    EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString());
}

TEST(RunReport, ScriptsReadWhatTheSummaryTellsPeople) {
    ProgramRun const run({"--run-all", "--falloff", "100"});
    EXPECT_EXIT_CODE(run, 0);
    expectPage(run);
    QJsonObject const json = summaryOf(run);
    for (char const* state : {"uncorrected", "corrected"}) {
        QJsonObject const told = json[QLatin1String(state)].toObject();
        double const dialog = told["dialog_colour_deviation_ab"].toDouble();
        EXPECT_NEAR(dialog, run.figure((QByteArray("uniformity ") + state).constData()), 0.005);
        EXPECT_NEAR(told["picture_colour_deviation_ab"].toDouble(), dialog, 0.2);
        // Noise and rounding add a little to what light and gains leave.
        EXPECT_LT(told["true_colour_deviation_ab"].toDouble(), dialog + 0.1);
        EXPECT_GT(told["true_colour_deviation_ab"].toDouble(), dialog - 0.6);
        EXPECT_NEAR(told["true_luminance_error_largest_against_centre_percent"].toDouble(),
                    told["luminance_error_largest_against_centre_percent"].toDouble(), 0.6);
    }
    EXPECT_EQ(json["registers"]["solution_registers_written"].toInt(),
              int(run.figure("registers of the solution written")));
    EXPECT_EQ(json["eeprom"]["operations"].toInt(), int(run.figure("EEPROM operations")));
}

TEST(RunReport, TellsTheDialogsOneFigureItsLimitAndItsRating) {
    QTemporaryDir const folder;
    QString const settings = folder.filePath("settings.ini");
    struct {
        char const* limit; ///< thousandths
        int exitCode;
        char const* result;
        char const* rating;
    } const rows[] = {{"2000", 0, "calibrated", "green, limit 2.00"},
                      {"1", 8, "calibrated, uniformity beyond the limit", "yellow, limit 0.00"},
                      {"-2000", 8, "calibrated, uniformity beyond the limit", "red, limit -2.00"}};
    for (auto const& row : rows) {
        SCOPED_TRACE(row.limit);
        ASSERT_TRUE(writeFile(settings, QByteArray("LensAssist GoodCU for POLY12=") + row.limit + '\n'));
        ProgramRun const run(
            {"--run-all", "--profile", writeSmallProfile(folder.path()), "--settings", settings});
        EXPECT_EXIT_CODE(run, row.exitCode);
        EXPECT_EQ(run.value("result").toStdString(), row.result);
        EXPECT_EQ(run.value("uniformity rating corrected").toStdString(), row.rating);
        EXPECT_TRUE(run.value("step CU_Status").startsWith(run.value("uniformity corrected") + ' '))
            << run.summary().toStdString();
        QJsonObject const told = summaryOf(run)["corrected"].toObject();
        EXPECT_EQ(told["dialog_rating"].toString(), QString(row.rating).section(',', 0, 0));
        EXPECT_NEAR(told["dialog_colour_deviation_limit_ab"].toDouble(),
                    QByteArray(row.limit).toDouble() / 1000, 0.005);
        QByteArray const page = run.contents("report.html");
        EXPECT_TRUE(page.contains(row.result) && page.contains(told["dialog_rating"].toString().toUtf8()));
    }
}

TEST(RunReport, AFailedRunHasOneToo) {
    QTemporaryDir const folder;
    ProgramRun const run({"--run-all", "--object", "--profile", writeSmallProfile(folder.path())});
    EXPECT_EXIT_CODE(run, 6);
    expectPage(run);
    EXPECT_TRUE(summaryOf(run)["corrected"].isNull());
    EXPECT_EQ(summaryOf(run)["cause"].toString(), run.value("cause"));
}

TEST(ShadingRun, MeasuresALensAndLaysTwoSideBySide) {
    QTemporaryDir const folder;
    QString const first = folder.filePath("a & b.json"), second = folder.filePath("b.json");
    ProgramRun const strong({"--measure-shading", first, "--profile", writeSmallProfile(folder.path())});
    EXPECT_EXIT_CODE(strong, 0);
    expectPage(strong, "shading-");
    ProgramRun const again({"--measure-shading", second, "--shading", first, "--light", "4000", "--profile",
                            writeSmallProfile(folder.path())});
    EXPECT_EXIT_CODE(again, 0);
    ProgramRun const both({"--compare-shading", first, second});
    EXPECT_EXIT_CODE(both, 0);
    expectPage(both, "shading-");
    QJsonArray const planes = summaryOf(both, "shading-")["planes"].toArray();
    ASSERT_EQ(planes.size(), 9);
    for (int plane = 3; plane < 6; ++plane) {
        EXPECT_EQ(planes[plane]["colour_temperature_K"].toInt(), 4000);
        EXPECT_LT(std::abs(planes[plane]["largest_difference_percent"].toDouble(-9)), 1.0);
    }
}

TEST(ShadingRun, WhatCannotBeMeasuredOrComparedEndsWithAMessage) {
    QTemporaryDir const folder;
    QString const other = folder.filePath("other.json"), cut = folder.filePath("cut.raw");
    ASSERT_TRUE(writeFile(other, "{}") && writeFile(cut, "short"));
    QString const table = folder.filePath("table.json");
    struct {
        QStringList arguments;
        char const* told;
    } const rows[] = {
        {{"--compare-shading", other}, "two files"},
        {{"--compare-shading", other, other, other}, "not an option"},
        {{"--compare-shading", other, other}, "other.json"},
        {{"--compare-shading", "none/a.json", other}, "none/a.json: cannot be read"},
        {{"--measure-shading", table, "--window"}, "without a window"},
        {{"--measure-shading", table, "--flat-field", cut}, "cut.raw"},
        {{"--measure-shading", table, "--level", "0.001"}, "too dark"},
        {{"--measure-shading", folder.filePath("none/table.json"), "--light", "5000"}, "none/table.json"},
        {{"--flat-field", cut}, "--measure-shading"},
    };
    for (auto const& row : rows) {
        ProgramRun const run(row.arguments);
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages().contains(QLatin1String(row.told))) << run.messages().toStdString();
        EXPECT_FALSE(QFile::exists(table));
    }
}

} // namespace
