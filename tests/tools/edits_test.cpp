#include "tests/tools/image_fixture.h"

using namespace kestra;

namespace {
TEST_F(ImageUnderTest, AnImportedSectionReadsAsItWasWritten) {
    struct {
        char const* lines;
        QString options;
        char const* shown;
        char const* note = "";
    } const rows[] = {{"; from a calibration\nREG = 0x0000, 0x3600, 0x3C02\nBITFIELD = 0x3780, 0x8000, 1\n"
                       "VAR = 18, 0x42, 5\nSTATE = Gamma, 9",
                       "", R"(
0      0x00        0x3600      -     0x0000      0x3C02
0      0x00        0x3780      0     0x8000      0x0001
1      0x12        0x0042      2     0x0000      0x0005
)"},
                      {"BITFIELD = 3, 0x20, 1, 1\nREG = 2, 0x10, 7\nREG = 0x11, 8", " --paged", R"(
0      0x03        0x0020      0     0x0001      0x0001
0      0x02        0x0010      -     0x0000      0x0007
0      0x00        0x0011      -     0x0000      0x0008
)"},
                      // For a sensor the record switches the correction and holds only what was told.
                      {"REG = 0, 0x3784, 0x21C\nREG = 0, 0x3602, 7", " --sensor polynomial", R"(
0      0x00        0x3780      2     0x8000      0x0000
0      0x00        0x3602      -     0x0000      0x0007
0      0x00        0x3784      -     0x0000      0x021C
0      0x00        0x3780      2     0x8000      0x0001
(Add)"},
                      {"REG = 0, 0x3782, 0x280\nREG = 0, 0x3B00, 0xAF0\n", " --sensor automatic-76",
                       "0      0x00        0x3B00      -     0x0000      0x0AF0\n",
                       "leave out 1 line of the section, the first is \"REG=0, 0x3782"}};
    for (auto const& row : rows) {
        write(imageOf({}));
        preset(row.lines);
        Outcome const outcome = run("import PRESET Lens~Correction PGA" + row.options);
        EXPECT_EQ(outcome.exitCode, kExitDone) << outcome.complaint;
        EXPECT_SAYS(outcome.complaint, row.note);
        EXPECT_SAYS(run(row.options == " --paged" ? "show 5 --paged" : "show 5").output, row.shown);
    }
}

TEST_F(ImageUnderTest, AnImportTakesThePlaceOfTheOlderRecordOfItsName) {
    preset("REG = 1, 2");
    write(imageOf({recordOf(kRecordPga, {3, 0, 4, 1, 2, 3, 4}, "LENS COR"),
                   recordOf(kRecordCcm, {}, "Lens Cor"), recordOf(kRecordPga, {}, "line 7")}));
    Outcome const outcome = run("import PRESET lens~correction pga");
    EXPECT_EQ(outcome.output, "imported\n0x001D  PGA           16    \"lens cor\"\n"
                              "in the place of the older one at 0x0005\n");
    EXPECT_SAYS(outcome.complaint, "--label NAME names it");
    Outcome const labelled = run("import PRESET Lens~Correction PGA --label Line~7");
    EXPECT_SAYS(labelled.complaint, "--sensor PROFILE adds");
    EXPECT_EQ(labelled.complaint.find("--label"), std::string::npos);
    EXPECT_EQ(run("list").output, "0x0005  CCM           9     \"Lens Cor\"\n"
                                  "0x0011  PGA           16    \"lens cor\"\n"
                                  "0x0024  PGA           16    \"Line 7\"\n");
}

TEST_F(ImageUnderTest, ARefusedCommandTellsWhyAndLeavesTheFileAsItWas) {
    std::string many = "STATE = none,1\n";
    for (int i = 0; i < 500; ++i)
        many += "MEM32 = 4, 0x100, 1\n";
    // Of an import the words are the section's type and the options.
    struct Row {
        std::string lines;
        QString words;
        std::string why; // empty: it is done
        ExitCode exitCode = kExitRefused;
    };
    constexpr char kPages[] = "BITFIELD = 3, 0x20, 1, 1\nREG = 2, 0x10, 7\nREG = 0x11, 8";
    for (auto const& [lines, words, why, exitCode] : std::vector<Row>{
             {"REG 1 2", "PGA", "no line that a record PGA can hold"},
             {"REG = 1, 2\nSTATE = WB Speed,1", "SWCCM", "mixes"},
             {"REG = 1, 2", "16", "holds no registers"},
             {many, "PGA", "does not fit: 8149 bytes"},
             // What a record cannot say.
             {kPages, "PGA", "the record would hold the id 0x00 instead of 0x02; --paged is for"},
             {"REG = 0x3600, 1", "PGA --paged", "; with --paged, pages and addresses go up to 0xFF"},
             {"REG = 0x3000,0x12345", "PGA",
              "\"REG=0x3000,0x12345\": the record would hold the value 0x2345"},
             {"VAR = 31, 0x3FF, 0xFFFF", "PGA", ""},
             {"VAR = 40,0x1234,0x54321", "PGA", "the id 0x08 instead of 0x28"},
             {"VAR = 18, 0x400, 1", "PGA", "the address 0x00 instead of 0x400"},
             {"VAR8 = 18, 0x42, 0x100", "PGA", "0x100 is more than 1 byte can hold"},
             {"MEM32 = 4, 0x12345678, -1", "PGA", ""},
             {"MEM32 = 4, 0x100, 0x100000001", "PGA", "a number has more than 32 bits"},
             // What a sensor has not.
             {"REG = 0x1234, 1", "PGA --sensor polynomial",
              "the line \"REG=0x1234, 1\": the sensor has no register"},
             {"BITFIELD = 0x3780, 0x8000, 2", "PGA --sensor polynomial", "has no room for 0x0002"},
             {"REG = 0x3602, 0x100000000", "PGA --sensor polynomial", "more than 32 bits"},
             {"STATE = Gamma, 9", "PGA --sensor polynomial", "no line of a register"},
             {"REG = 0x3602, 1", "CCM --sensor polynomial", "--sensor is for records PGA"},
             {"REG = 0x3602, 1", "PGA --sensor none", "none", kExitUnusable},
             // Other commands.
             {"REG = 1, 2", "import PRESET Nowhere PGA", "has no section [Nowhere]"},
             {"", "import nowhere.ini Lens~Correction PGA", "nowhere.ini: cannot be read: ", kExitUnusable},
             {"", "delete PGA Other", "there is no record PGA named \"Other\""},
             {"", "delete 16 Other", "have no name"},
         }) {
        SCOPED_TRACE(lines.substr(0, 80) + ": " + words.toStdString());
        Bytes const before = imageOf({recordOf(kRecordPga, {3, 0, 4, 1, 2, 3, 4}, "Lens Cor"),
                                      textRecord(kRecordTimeStamp, "2024/05/31 23:5"), recordOf(77, {})});
        write(before);
        preset(lines);
        bool const isWhole = words.startsWith("import") || words.startsWith("delete");
        Outcome const outcome = run((isWhole ? "" : "import PRESET Lens~Correction ") + words);
        EXPECT_EQ(outcome.exitCode, why.empty() ? kExitDone : exitCode);
        EXPECT_SAYS(outcome.complaint, why);
        EXPECT_EQ(read() == before, !why.empty());
    }
}

TEST_F(ImageUnderTest, DeleteTakesTheFirstOfTheTypeOrTheNamedOneAndTellsWhatIsLeft) {
    write(imageOf({recordOf(kRecordPga, {}, "First"), recordOf(kRecordPga, {}, "Second"), recordOf(77, {}),
                   recordOf(kRecordPga, {}, "Third")}));
    EXPECT_EQ(run("delete 8 second").output,
              "deleted\n0x0011  PGA           9     \"Second\"\n2 records of this type left\n");
    EXPECT_EQ(run("delete pga").output,
              "deleted\n0x0005  PGA           9     \"First\"\n1 record of this type left\n");
    EXPECT_EQ(run("delete 77").exitCode, kExitDone);
    EXPECT_EQ(run("list").output, "0x0005  PGA           9     \"Third\"\n");
}

TEST_F(ImageUnderTest, FormatCreatesAnErasedDeviceAndKeepsTheBytesOfAnOldOne) {
    EXPECT_EQ(run("format").output, "created and formatted\n");
    EXPECT_EQ(run("list").output, "no records\n");
    Bytes expected(8192, 0xFF);
    std::copy_n("VYEE\1", 5, expected.begin());
    EXPECT_EQ(read(), expected);

    Bytes old = imageOf(recordsOfEveryKind());
    write(old);
    EXPECT_EQ(run("format").output, "formatted\n5 records can no longer be reached\n");
    old[5] = 0xFF;
    EXPECT_EQ(read(), old);
}

} // namespace
