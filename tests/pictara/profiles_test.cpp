#include "tests/pictara/program_run.h"
#include "tests/support/small_profile.h"

#include <gtest/gtest.h>
#include <ostream>
#include <vector>

namespace {
// How a sensor's picture gets better by one run, in the dialog's own figure.
struct Row {
    char const* profile;
    double uncorrectedAtLeast = 4.0;
    char const* status = "Done.";
};

void PrintTo(Row const& row, std::ostream* out) { *out << row.profile; }

// These and the adaptive ones below have all four orientations and all four Bayer phases, of the array and
// of the delivered frame.
constexpr Row kRows[] = {
    {"polynomial-extreme"},
    {"polynomial-rotated"},
    {"soc-pga"},
    {"ycbcr", 2.0, "YCbCr calibration. Bypass mode recommended."},
    {"soc-rgb-16", 2.0},
    {"unusable-rows-33"},
    {"paged-154"},
};

class Profile : public testing::TestWithParam<Row> {};

TEST_P(Profile, IsFlattenedByOneRun) {
    Row const& row = GetParam();
    QTemporaryDir const folder;
    ProgramRun const run(
        {"--run-all", "--profile", writeChangedProfile(folder.path(), row.profile, kNoEeprom)});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_GE(run.figure("uniformity uncorrected"), row.uncorrectedAtLeast);
    EXPECT_LE(run.figure("uniformity corrected"), 1.0);
    EXPECT_EQ(run.value("step Calibrate_Status").toStdString(), row.status);
}

INSTANTIATE_TEST_SUITE_P(LensShading, Profile, testing::ValuesIn(kRows), [](auto const& row) {
    return QString(row.param.profile).remove(QLatin1Char('-')).toStdString();
});

class AdaptiveProfile : public testing::TestWithParam<char const*> {};

// A line of the matrix, a figure for each light: the three of the rows, redder ones first, and the one
// between.
std::vector<double> figures(ProgramRun const& run, char const* line) {
    std::vector<double> result;
    for (QString const& text : run.value(line).simplified().split(QLatin1Char(' ')))
        result.push_back(text.toDouble());
    return result;
}

TEST_P(AdaptiveProfile, IsFlattenedUnderEachLightAndBetweenByTheBlendAlone) {
    // One of them saves its record, too.
    QString profile = GetParam();
    QTemporaryDir const folder;
    if (profile != "adaptive-72")
        profile = writeChangedProfile(folder.path(), GetParam(), kNoEeprom);
    ProgramRun const run({"--run-all", "--profile", profile});
    EXPECT_EXIT_CODE(run, 0);
    EXPECT_EQ(run.value("uniformity under the light of").simplified(), "2800 K 4000 K 6500 K 4900 K");
    auto const uncorrected = figures(run, "no correction"), middleAlone = figures(run, "table 2 alone"),
               corrected = figures(run, "blended tables");
    ASSERT_TRUE(uncorrected.size() == 4 && middleAlone.size() == 4 && corrected.size() == 4)
        << run.summary().toStdString();
    for (size_t light = 0; light < 4; ++light) {
        SCOPED_TRACE(light);
        EXPECT_GE(uncorrected[light], 3.0);
        EXPECT_LE(corrected[light], light == 3 ? 1.3 : 1.0);
        EXPECT_GT(corrected[light], 0.0) << "a noisy picture is never quite even";
        EXPECT_GE(middleAlone[light], light == 0 || light == 2 ? 1.5 * corrected[light] : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(ThreeIlluminants, AdaptiveProfile,
                         testing::Values("three-tables-68", "zone-tables-68", "adaptive-72",
                                         "adaptive-72-flipped", "adaptive-76", "automatic-76"),
                         [](auto const& row) {
                             return QString(row.param).remove(QLatin1Char('-')).toStdString();
                         });
} // namespace
