#include "tests/measured_folder.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

constexpr int kLongestRunMs = 280'000;

// One run of the program with its results in a folder of its own.
class ProgramRun {
public:
    explicit ProgramRun(QStringList arguments) {
        arguments << QStringLiteral("--output") << m_folder.path();
        QProcess process;
        process.start(QStringLiteral(PICTARA_SIM), arguments);
        m_ended = process.waitForFinished(kLongestRunMs) && process.exitStatus() == QProcess::NormalExit;
        m_exitCode = process.exitCode();
        m_messages = QString::fromLocal8Bit(process.readAllStandardError());
        QFile summary(file(QStringLiteral("summary.txt")));
        if (summary.open(QIODevice::ReadOnly))
            m_summary = QString::fromUtf8(summary.readAll());
    }

    /// -1 when it crashed or did not end.
    [[nodiscard]] int exitCode() const { return m_ended ? m_exitCode : -1; }
    [[nodiscard]] QString const& messages() const { return m_messages; }
    [[nodiscard]] QString const& summary() const { return m_summary; }
    [[nodiscard]] QString file(QString const& name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString value(char const* name) const {
        QRegularExpression const line(QStringLiteral("^%1: (.*)$").arg(QString::fromLatin1(name)),
                                      QRegularExpression::MultilineOption);
        return line.match(m_summary).captured(1);
    }
    /// The figure of a line of the summary, or one that no comparison likes.
    [[nodiscard]] double figure(char const* name) const {
        bool ok = false;
        double const number = value(name).section(QLatin1Char(' '), 0, 0).toDouble(&ok);
        return ok ? number : std::numeric_limits<double>::quiet_NaN();
    }

private:
    QTemporaryDir m_folder;
    bool m_ended = false;
    int m_exitCode = 0;
    QString m_messages, m_summary;
};

#define EXPECT_EXIT_CODE(run, code)                                                                          \
    EXPECT_EQ((run).exitCode(), code) << (run).messages().toStdString() << (run).summary().toStdString()

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

TEST(Program, FlattensFramesOfEveryType) {
    for (char const* profile : {"soc-pga", "ycbcr", "kind16"}) {
        SCOPED_TRACE(profile);
        ProgramRun const run({"--run-all", "--profile", profile});
        EXPECT_EXIT_CODE(run, 0);
        EXPECT_GE(run.figure("uniformity uncorrected"), 4.0);
        EXPECT_LE(run.figure("uniformity corrected"), 1.0);
    }
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
    QDir const folder = measuredFolder();
    QStringList const modules = folder.entryList({"*.json"}, QDir::Files, QDir::Name);
    if (modules.isEmpty())
        GTEST_SKIP() << "no measured lenses in " << folder.path().toStdString();
    for (QString const& module : modules) {
        for (QString const& lamp : lampsOf(folder.filePath(module))) {
            SCOPED_TRACE(module.toStdString() + " at " + lamp.toStdString());
            ProgramRun const run({"--run-all", "--light", lamp, "--shading", folder.filePath(module)});
            EXPECT_EXIT_CODE(run, 0);
            EXPECT_LE(run.figure("uniformity corrected"), 1.0);
            EXPECT_LE(5 * run.figure("luminance error, largest against the median block, corrected"),
                      run.figure("luminance error, largest against the median block, uncorrected"));
            EXPECT_LE(run.figure("luminance error, mean against the median block, corrected"), 3.0);
        }
    }
}

TEST(Program, EqualSeedsGiveEqualRuns) {
    ProgramRun const first({"--run-all", "--profile", "kind33", "--seed", "5"});
    ProgramRun const second({"--run-all", "--profile", "kind33", "--seed", "5"});
    EXPECT_EXIT_CODE(first, 0);
    EXPECT_EQ(first.summary(), second.summary());
    EXPECT_EQ(QImage(first.file("after.png")), QImage(second.file("after.png")));
}

TEST(Program, AFailureIsToldByExitCodeAndCause) {
    ProgramRun const object({"--run-all", "--object"});
    EXPECT_EXIT_CODE(object, 1);
    EXPECT_TRUE(object.messages().contains("Calibrate_Status: Error")) << object.messages().toStdString();
    EXPECT_TRUE(object.value("cause").contains("not flat")) << object.summary().toStdString();
    EXPECT_FALSE(QFile::exists(object.file("after.png")));

    ProgramRun const late({"--run-all", "--max-frames", "50"});
    EXPECT_EXIT_CODE(late, 3);
    EXPECT_LE(late.figure("frames"), 50);
}

TEST(Program, WhatCannotBeRunEndsWithAMessage) {
    QTemporaryDir const folder;
    QString const malformed = folder.filePath("lens.json"), noPresets = folder.filePath("host.ini");
    for (QString const& name : {malformed, noPresets}) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("[Other]\n") > 0);
    }
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
        {{"--falloff", "97"}, "95%"},
    };
    for (auto const& row : rows) {
        ProgramRun const run(QStringList(QStringLiteral("--run-all")) + row.arguments);
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages().contains(QLatin1String(row.told))) << run.messages().toStdString();
    }
}

} // namespace
