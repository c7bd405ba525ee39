#include "tests/pictara/program_run.h"
#include "tests/support/small_profile.h"

#include <QFile>
#include <QImage>
#include <gtest/gtest.h>

namespace {
constexpr char kOtherFailure[] = "Calibrate_Status: Error. Are the External sensor data files installed?";

struct Refusal : testing::Test {
    QTemporaryDir folder;
    QStringList const run{"--run-all", "--profile", writeSmallProfile(folder.path())};
};

TEST_F(Refusal, IsToldByDialogSummaryAndExitCode) {
    struct {
        QStringList arguments;
        int exitCode;
        char const* cause;
        QString status = kOtherFailure;
    } const rows[] = {
        {run + QStringList{"--level", "0.001"}, 4, "too dark"},
        {run + QStringList{"--level", "10000"}, 5, "clipped"},
        {run + QStringList{"--gradient", "-0.5"}, 6, "the lamp is not even"},
        {{"--run-all", "--object", "--profile", writeChangedProfile(folder.path(), "adaptive-72", kNoEeprom)},
         6,
         "not flat",
         {}},
        {{"--run-all", "--profile", "wrong-size"},
         7,
         "1280 x 720 instead of 1920 x 1080",
         "Calibrate_Status: Error: Incompatible image size."},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.cause);
        ProgramRun const refused(row.arguments);
        EXPECT_EXIT_CODE(refused, row.exitCode);
        for (QString const& told : {refused.value("cause"), refused.messages()})
            EXPECT_TRUE(told.contains(row.status) && told.contains(row.cause)) << told.toStdString();
        EXPECT_EQ(refused.value("step File_Save_Status"), QStringLiteral("Not done yet."));
    }
}

constexpr char kMendTheLight[] = R"(
set FallOff 100%
press LensCalibSetup
press AE
wait AE_Status Done.
press AWB
wait AWB_Status Done.
press Calibrate
wait Calibrate_Status Error*
light 5000 1
press AE
wait AE_Status Done.
press AWB
wait AWB_Status Done.
press Calibrate
wait CU_Status "*.*better.*"
)";

// A solution without any falloff leaves all blocks as bright as the centre.
TEST_F(Refusal, DoesNotSpoilTheNextGoodPicture) {
    QString const script = folder.filePath("mend.txt");
    ASSERT_TRUE(writeFile(script, kMendTheLight));
    ProgramRun const mended({"--script", script, "--level", "0.001", "--profile",
                             writeChangedProfile(folder.path(), "polynomial", kNoEeprom)});
    EXPECT_EXIT_CODE(mended, 0);
    EXPECT_GE(mended.figure("uniformity uncorrected"), 4.0);
    EXPECT_LE(mended.figure("uniformity corrected"), 1.0);
    EXPECT_LE(mended.figure("largest luminance error against the centre block corrected"), 1.5);
}

// Where the object is, the picture is marked; what an earlier run left is gone or told.
TEST_F(Refusal, IsPicturedAmongOutputsOfThisRunAlone) {
    QString const output = folder.filePath("output");
    ASSERT_EXIT_CODE(ProgramRun(run, output), 0);
    ProgramRun const refused(run + QStringList("--object"), output);
    EXPECT_EXIT_CODE(refused, 6);
    for (char const* picture : {"before.png", "after.png"})
        EXPECT_FALSE(QFile::exists(refused.file(picture))) << picture;
    QImage const picture(refused.file("refused.png"));
    auto const isMarked = [&](int x, int y) {
        QColor const colour = picture.pixelColor(x, y);
        return colour.red() > colour.green() + 30 && colour.blue() > colour.green() + 30;
    };
    ASSERT_EQ(picture.size(), QSize(480, 270));
    EXPECT_TRUE(isMarked(297, 107));
    EXPECT_FALSE(isMarked(240, 200));
    refused.expectPage();
    EXPECT_TRUE(refused.contents("report.html").contains("<h2>Refused</h2>"));
    EXPECT_TRUE(refused.json()["corrected"].isNull());
    EXPECT_EQ(refused.json()["cause"].toString(), refused.value("cause"));
    EXPECT_EQ(refused.value("results files of earlier runs"), QStringLiteral("POLY12_POLY12.ini"));

    ProgramRun const mended(run, output);
    EXPECT_EXIT_CODE(mended, 0);
    EXPECT_FALSE(QFile::exists(mended.file("refused.png")));
    EXPECT_EQ(mended.value("results files of earlier runs"), QString());
}

} // namespace
