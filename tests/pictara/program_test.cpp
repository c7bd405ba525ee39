#include "tests/pictara/program_run.h"

#include <QFileInfo>
#include <QImage>
#include <ostream>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {
// How a sensor's picture gets better by one run, in the dialog's own figure.
struct ProfileRow {
    char const* profile;
    double uncorrectedAtLeast = 4.0;
    int lights = 0; ///< under which each table is measured
    char const* status = "Done.";
};

void PrintTo(ProfileRow const& row, std::ostream* out) { *out << row.profile; }

// They have all four orientations and all four Bayer phases, of the array and of the delivered frame.
constexpr ProfileRow kRows[] = {
    {"polynomial"},
    {"polynomial-extreme"},
    {"polynomial-rotated"},
    {"soc-pga"},
    {"ycbcr", 2.0, 0, "YCbCr calibration. Bypass mode recommended."},
    {"soc-rgb-16", 2.0},
    {"unusable-rows-33"},
    {"paged-154"},
    {"three-tables-68", 3.0, 4},
    {"zone-tables-68", 3.0, 4},
    {"adaptive-72", 3.0, 4},
    {"adaptive-72-flipped", 3.0, 4},
    {"adaptive-76", 3.0, 4},
    {"automatic-76", 3.0, 4},
};

class Profile : public testing::TestWithParam<ProfileRow> {};

TEST_P(Profile, IsFlattenedByOneRunAndUnderEachLightByTheBlendOfItsTables) {
    ProfileRow const& row = GetParam();
    QTemporaryDir const folder;
    // Of those with tables one saves its record, too.
    bool const isWhole = QByteArray(row.profile) == "adaptive-72";
    QString const profile = writeChangedProfile(folder.path(), row.profile, isWhole ? "" : kNoEeprom);
    ProgramRun const run({"--run-all", "--profile", profile});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_GE(run.before(), row.uncorrectedAtLeast);
    EXPECT_LE(run.after(), 1.0);
    EXPECT_EQ(run.value("steps.Calibrate_Status").toStdString(), row.status);
    QJsonArray const lights = run.json["lights"].toArray();
    ASSERT_EQ(lights.size(), row.lights);
    constexpr int kKelvin[] = {2800, 4000, 6500, 4900}; // the last one lies between the tables' own
    for (int i = 0; i < lights.size(); ++i) {
        SCOPED_TRACE(kKelvin[i]);
        EXPECT_EQ(lights[i]["colour_temperature_K"].toInt(), kKelvin[i]);
        EXPECT_GE(lights[i]["uncorrected_ab"].toDouble(), row.uncorrectedAtLeast);
        double const blended = lights[i]["blended_ab"].toDouble(99);
        EXPECT_LE(blended, i == 3 ? 1.3 : 1.0);
        EXPECT_GT(blended, 0.0) << "a noisy picture is never quite even";
        EXPECT_GE(lights[i]["table_2_alone_ab"].toDouble(-1), i == 0 || i == 2 ? 1.5 * blended : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(LensShading, Profile, testing::ValuesIn(kRows), [](auto const& row) {
    return QString(row.param.profile).remove(QLatin1Char('-')).toStdString();
});

TEST_F(Program, FlattensMeasuredLensesUnderEachLamp) {
    QString const named = qEnvironmentVariable("KESTRA_MEASURED_SHADING");
    if (named.isEmpty())
        GTEST_SKIP() << "KESTRA_MEASURED_SHADING names no folder of measured lenses";
    QStringList const lenses = QDir(named).entryList({"*.json"}, QDir::Files);
    ASSERT_FALSE(lenses.isEmpty()) << "no measured lenses in " << named.toStdString();
    QString const profile = writeChangedProfile(folder.path(), "polynomial", kNoEeprom);
    for (QString const& name : lenses) {
        QString const lens = QDir(named).filePath(name);
        for (QJsonValue const lamp : QJsonDocument::fromJson(contentsOf(lens))["illuminants"].toArray()) {
            QString const kelvin = QString::number(lamp["colour_temperature_K"].toInt());
            SCOPED_TRACE(name.toStdString() + " at " + kelvin.toStdString());
            ProgramRun const run({"--run-all", "--profile", profile, "--light", kelvin, "--shading", lens});
            EXPECT_EXIT_CODE(run, 0);
            EXPECT_LE(run.after(), 0.7);
            EXPECT_LE(5 * run.figure("corrected.luminance_error_largest_against_median_percent"),
                      run.figure("uncorrected.luminance_error_largest_against_median_percent"));
            EXPECT_LE(run.figure("corrected.luminance_error_mean_against_median_percent"), 3.0);
        }
    }
}

// The dialog's limit is the one that it remembers, unless another is typed.
TEST_F(Program, CertifiesByTheDialogsFigureLimitAndRating) {
    struct {
        double remembered;
        QStringList options;
        int exitCode;
        char const* result;
        char const* rating;
        double limit;
    } const rows[] = {{2, {}, 0, "pass", "green", 2},
                      {2, {"--limit", "0.25"}, 10, "marginal", "yellow", 0.25},
                      {-2, {}, 8, "fail", "red", -2},
                      {2, {"--luminance-limit", "0.01"}, 8, "fail", "green", 2}};
    QString const boards = path("boards.csv");
    for (auto const& row : rows) {
        SCOPED_TRACE(row.result);
        write("settings.ini",
              "LensAssist GoodCU for POLY12=" + QByteArray::number(1000 * row.remembered) + '\n');
        ProgramRun const run(QStringList{"--run-all", "--profile", smallProfile(), "--append", boards} +
                                 row.options,
                             folder.path());
        EXPECT_EXIT_CODE(run, row.exitCode);
        EXPECT_EQ(run.value("result").toStdString(), row.result);
        EXPECT_EQ(run.value("steps.CU_Status").section(' ', 0, 0), QString::number(run.after(), 'f', 2));
        EXPECT_EQ(run.value("corrected.dialog_rating"), row.rating);
        EXPECT_EQ(run.figure("corrected.dialog_colour_deviation_limit_ab"), row.limit);
        EXPECT_TRUE(run.text.contains(QString("\nresult: %1\n").arg(row.result))) << run.text.toStdString();
        QString const line = contentsOf(boards).split('\n').rbegin()[1];
        EXPECT_TRUE(line.contains(
            QString(",%1,%2,\"%3\",\"none\",").arg(run.before()).arg(run.after()).arg(row.result)))
            << line.toStdString();
    }
    EXPECT_EQ(contentsOf(boards).count('\n'), 5);
}

// On the raw path and behind the sensor's bus master.
TEST_F(Program, StoresWhatCorrectsAndLeavesItsResults) {
    for (char const* base : {"polynomial", "bus-master-103"}) {
        SCOPED_TRACE(base);
        // The board has got its number before.
        QByteArray const number =
            QByteArray::fromHex("56594545010b000b") + QByteArray("A123456789\0\xFF", 12);
        QByteArray const before = number + QByteArray(8192 - number.size(), '\xFF');
        QString const device = write(base, before), profile = smallProfile(base, {});
        ProgramRun const run({"--run-all", "--profile", profile, "--eeprom", device});
        EXPECT_EXIT_CODE(run, 0);
        EXPECT_LE(run.after(), 1.0);
        for (char const* picture : {"before.png", "after.png"})
            EXPECT_EQ(QImage(run.file(picture)).size(), QSize(480, 270)) << picture;
        EXPECT_EQ(run.value("eeprom.contents"), QStringLiteral("holds the solution"));
        EXPECT_EQ(run.value("board.serial_number"), QStringLiteral("A123456789"));
        QString const image = write("imported.bin", before), results = run.value("board.results_file");
        EXPECT_EQ(QProcess::execute(HEADBOARD_IMAGE, {image, "import", results, "Lens Correction", "PGA",
                                                      "--sensor", profile, "--label", "KestraTune"}),
                  0);
        EXPECT_EQ(contentsOf(device), contentsOf(image)) << "the tool makes another record of the results";

        ProgramRun const replay({"--replay-eeprom", device, "--profile", profile});
        EXPECT_EXIT_CODE(replay, 0);
        // Other frames have other noise.
        EXPECT_NEAR(run.before(), replay.before(), 0.1);
        EXPECT_NEAR(run.after(), replay.after(), 0.1);
        EXPECT_EQ(replay.at("eeprom.correction_was_on"), QJsonValue(true));
        EXPECT_EQ(replay.figure("registers.solution_registers_written"), 0);
        EXPECT_FALSE(replay.contents("replay-certificate.html").isEmpty());
        EXPECT_TRUE(replay.contents("certificate.html").isEmpty()) << "a calibration's would be lost";
    }
}

TEST_F(Program, WhatCannotBeRunEndsWithAMessage) {
    QString const malformed = write("lens.json", "[Other]\n"), noPresets = write("host.ini", "[Other]\n"),
                  blank = write("blank.bin", QByteArray(8192, '\xFF')),
                  cut = write("cut.bin", QByteArray(8191, '\xFF')), pipe = path("pipe");
    std::vector<std::pair<QStringList, char const*>> rows = {
        {{"--profile", "no-such"}, "no-such"},
        {{"--shading", malformed}, "lens.json"},
        {{"--ini", noPresets}, "Lens Calibration Setup"},
        {{"--plugin", path("none.so")}, "none.so"},
        {{"--append", path("none/boards.csv")}, "none/boards.csv: cannot be written"},
        {{"--eeprom", cut}, "8191"},
        {{"--eeprom", blank, "--profile", "no-eeprom-25"}, "has no EEPROM for --eeprom"},
        {{"--fault", "error-12", "--profile", "no-eeprom-25"}, "has no EEPROM for --fault"},
        {{"--replay-eeprom", blank}, "EEPROM"},
    };
#ifdef Q_OS_UNIX
    // A pipe that nobody writes to would hold the program up, and a rename would put a file in its place.
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (char const* option : {"--eeprom", "--ini", "--shading", "--record", "--profile", "--script",
                               "--replay-eeprom", "--plugin"})
        rows.push_back({{option, pipe}, "pipe"});
    EXPECT_EXIT_CODE(ProgramRun({"--replay", pipe}), 2);
#endif
    for (auto const& [arguments, told] : rows) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        ProgramRun const run(QStringList("--run-all") + arguments);
        EXPECT_EXIT_CODE(run, 2);
        EXPECT_TRUE(run.messages.contains(told)) << run.messages.toStdString();
        EXPECT_EQ(run.messages.count("pictara-sim: "), 1) << run.messages.toStdString();
    }
    EXPECT_FALSE(QFileInfo(pipe).isFile());
}
} // namespace
