#include "tests/tools/image_fixture.h"

#include <QProcess>

using namespace kestra;

namespace {
// Nothing of a record gets through to the terminal.
TEST_F(ImageUnderTest, ListAndShowDecodeWhatEachTypeHolds) {
    write(imageOf(recordsOfEveryKind()));
    std::pair<char const*, char const*> const rows[] = {
        {"list", R"(0x0005  PGA           48    "DEFAULT"
0x0038  SWPGA         55    "100%1"
0x0072  Headboard ID  10    "A\"1\n\x1B[2J\xE9"
0x007F  Scratchpad    18    "notes"
0x0094  type 77       3
)"},
        {"show 5", R"(0x0005  PGA           48    "DEFAULT"
class  id          address     size  mask        value
0      0x00        0x3600      -     0x0000      0x3C02
0      0x00        0x0020      -     0x0000      0x0007
1      0x12        0x0042      1     0x0000      0x0005
2      0x04        0x12345678  4     0x8000      0xFFFFFFFF
(Addresses without a size are shown whole; --paged takes their high byte as the page.)
)"},
        {"show 0x38", R"(0x0038  SWPGA         55    "100%1"
"Lens Curve Red, 1"
""
"Lens Correction Falloff,80"
)"},
        {"show 0x7F", R"(0x007F  Scratchpad    18    "notes"
0x0091  01 02 78                                         ..x
)"},
        {"show 148", R"(0x0094  type 77       3
0x0097  FF 00 79                                         ..y
)"},
    };
    for (auto const& [command, output] : rows)
        EXPECT_EQ(run(command).output, output);
    for (char const* const command : {"show 6", "show 8191", "show 4294967295"})
        EXPECT_EQ(run(command).exitCode, kExitRefused) << command;
    // Where no address has a high byte, both ways give the same and nothing needs to be said.
    write(imageOf({recordOf(kRecordPga, {3, 0, 4, 0, 0x20, 0, 7})}));
    EXPECT_EQ(run("show 5").output, run("show 5 --paged").output);
}

TEST_F(ImageUnderTest, BadCommandLinesAndFilesAreToldFromDamage) {
    EXPECT_EQ(run("list").exitCode, kExitUnusable); // there is none
    for (size_t const size : {0, 7, 65537}) {
        write(Bytes(size, 0xFF));
        Outcome const outcome = run("check");
        EXPECT_EQ(outcome.exitCode, kExitUnusable);
        EXPECT_SAYS(outcome.complaint, "it has " + std::to_string(size) + " bytes");
        EXPECT_EQ(run("format").exitCode, kExitUnusable);
        EXPECT_EQ(read().size(), size);
    }
    write(imageOf({}));
    for (char const* const command : {"", "lst", "list 5", "show", "show 5x", "list --paged", "import a b",
                                      "import a b PGA --label=", "import a b PGA --paged --sensor polynomial",
                                      "delete END_OF_RECORDS", "delete 256"})
        EXPECT_EQ(run(command).exitCode, kExitUnusable) << command;
    EXPECT_EQ(read(), imageOf({}));
    EXPECT_EQ(run("--help").exitCode, kExitDone);
    EXPECT_SAYS(run("--help").output, "delete TYPE [NAME]");
}

TEST_F(ImageUnderTest, TheProgramHandsOnExitCodesAndTellsAnswersFromComplaints) {
    QString const nowhere = image + "/none";
    for (auto const& [file, exitCode, output, complaint] :
         {std::tuple(image, kExitDone, "created and formatted\n", QString()),
          {nowhere, kExitUnusable, "", "headboard-image: " + nowhere + ": cannot be written"}}) {
        QProcess process;
        process.start(HEADBOARD_IMAGE, {file, "format"});
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), exitCode);
        EXPECT_EQ(process.readAllStandardOutput().replace("\r\n", "\n"), output);
        QString const told = process.readAllStandardError();
        EXPECT_TRUE(told.startsWith(complaint) && told.isEmpty() == complaint.isEmpty()) << qPrintable(told);
    }
}
} // namespace
