#include "headboard/record_format.h"
#include "tests/tools/image_fixture.h"

using namespace kestra;

namespace {

using headboard_image::kExitDone;
using headboard_image::kExitRefused;
using headboard_image::Outcome;

TEST_F(ImageUnderTest, ListShowsEveryRecordAndLetsNothingThroughToTheTerminal) {
    write(imageOf(recordsOfEveryKind()));
    Outcome const outcome = run({"list"});
    EXPECT_EQ(outcome.exitCode, kExitDone);
    EXPECT_EQ(outcome.output, R"(0x0005  PGA           48    "DEFAULT"
0x0038  SWPGA         55    "100%1"
0x0072  Headboard ID  10    "A\"1\n\x1B[2J\xE9"
0x007F  Scratchpad    18    "notes"
0x0094  type 77       3
)");
}

TEST_F(ImageUnderTest, ShowDecodesWhatEachTypeHolds) {
    write(imageOf(recordsOfEveryKind()));
    EXPECT_EQ(run({"show", "5"}).output, R"(0x0005  PGA           48    "DEFAULT"
class  id          address     size  mask        value
0      0x00        0x3600      -     0x0000      0x3C02
0      0x00        0x0020      -     0x0000      0x0007
1      0x12        0x0042      1     0x0000      0x0005
2      0x04        0x12345678  4     0x8000      0xFFFFFFFF
(Addresses without a size are shown whole; --paged takes their high byte as the page.)
)");
    EXPECT_EQ(run({"show", "0x38"}).output, R"(0x0038  SWPGA         55    "100%1"
"Lens Curve Red, 1"
""
"Lens Correction Falloff,80"
)");
    EXPECT_EQ(run({"show", "0x7F"}).output, R"(0x007F  Scratchpad    18    "notes"
0x0091  01 02 78                                         ..x
)");
    EXPECT_EQ(run({"show", "148"}).output, R"(0x0094  type 77       3
0x0097  FF 00 79                                         ..y
)");
    for (char const* const offset : {"0", "6", "8175", "8191", "4294967295"})
        EXPECT_EQ(run({"show", offset}).exitCode, kExitRefused) << offset;
}

TEST_F(ImageUnderTest, ShowTakesPagesFromShortEntriesOnly) {
    write(imageOf(recordsOfEveryKind()));
    EXPECT_EQ(run({"show", "5", "--paged"}).output, R"(0x0005  PGA           48    "DEFAULT"
class  id          address     size  mask        value
0      0x36        0x0000      -     0x0000      0x3C02
0      0x00        0x0020      -     0x0000      0x0007
1      0x12        0x0042      1     0x0000      0x0005
2      0x04        0x12345678  4     0x8000      0xFFFFFFFF
)");
    // Where no address has a high byte, both ways give the same and nothing needs to be said.
    write(imageOf({recordOf(kRecordPga, {3, 0, 4, 0, 0x20, 0, 7})}));
    EXPECT_EQ(run({"show", "5"}).output, run({"show", "5", "--paged"}).output);
}

} // namespace
