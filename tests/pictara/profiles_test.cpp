#include "tests/pictara/program_run.h"
#include "tests/pictara/small_profile.h"

#include <gtest/gtest.h>
#include <ostream>

namespace {

// How a sensor's picture gets better by one run, in the dialog's own figure.
struct Row {
    char const* profile;
    double uncorrectedAtLeast = 4.0;
    char const* status = "Done.";
};

void PrintTo(Row const& row, std::ostream* out) {
    *out << row.profile;
}

// The profiles poly-*ed differ in orientation and Bayer phase: together with the default one they have all
// four of each, of the array and of the delivered frame.
constexpr Row kRows[] = {
    {"poly-strong"},
    {"poly-extreme"},
    {"poly-mirrored"},
    {"poly-flipped"},
    {"poly-rotated"},
    {"soc-pga"},
    {"ycbcr", 2.0, "YCbCr calibration. Bypass mode recommended."},
    {"kind16", 2.0},
    {"kind33"},
    {"kind154"},
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

} // namespace
