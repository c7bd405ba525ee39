#include "tests/tools/image_fixture.h"

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

using namespace kestra;

namespace {
using headboard_image::ExitCode;
using headboard_image::kExitDone;
using headboard_image::kExitRefused;
using headboard_image::kExitUnusable;
using headboard_image::Outcome;

#define EXPECT_SAYS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

struct Import : ImageUnderTest {
    /// Of the section "Lens Correction" with these lines.
    Outcome import(std::string const& lines, QStringList const& arguments = {QStringLiteral("PGA")}) const {
        return run(QStringList{"import", preset(lines), "Lens Correction"} + arguments);
    }
};

TEST_F(ImageUnderTest, AnImportedSectionReadsAsItWasWrittenAndTakesThePlaceOfTheOlder) {
    write(imageOf({recordOf(kRecordPga, {3, 0, 4, 1, 2, 3, 4}, "LENS COR"),
                   recordOf(kRecordCcm, {}, "Lens Cor"), recordOf(kRecordPga, {}, "Other")}));
    QString const file =
        preset("; from a calibration\nREG = 0x0000, 0x3600, 0x3C02\nBITFIELD = 0x3780, 0x8000, 1\n"
               "VAR = 18, 0x42, 5\nSTATE = Gamma, 9");
    Outcome const outcome = run({"import", file, "lens correction", "pga"});
    EXPECT_EQ(outcome.exitCode, kExitDone) << outcome.complaint;
    EXPECT_EQ(outcome.output, "imported\n0x001D  PGA           44    \"lens cor\"\n"
                              "in the place of the older one at 0x0005\n");
    EXPECT_SAYS(run({"show", "0x1D"}).output, R"(
0      0x00        0x3600      -     0x0000      0x3C02
0      0x00        0x3780      0     0x8000      0x0001
1      0x12        0x0042      2     0x0000      0x0005
)");
    EXPECT_EQ(run({"list"}).output, "0x0005  CCM           9     \"Lens Cor\"\n"
                                    "0x0011  PGA           9     \"Other\"\n"
                                    "0x001D  PGA           44    \"lens cor\"\n");
    Bytes const before = imageOf({}), after = read();
    EXPECT_TRUE(
        std::equal(before.begin() + kStoreSize, before.end(), after.begin() + kStoreSize, after.end()));
}

TEST_F(Import, PagesAreKeptOrTheImportIsRefused) {
    write(imageOf({}));
    constexpr char kLines[] = "BITFIELD = 3, 0x20, 1, 1\nREG = 2, 0x10, 7\nREG = 0x11, 8";
    EXPECT_SAYS(import(kLines).complaint,
                "the record would hold the id 0x00 instead of 0x02; --paged is for");
    EXPECT_EQ(read(), imageOf({}));
    EXPECT_EQ(import(kLines, {"PGA", "--paged"}).exitCode, kExitDone);
    EXPECT_SAYS(run({"show", "5", "--paged"}).output, R"(
0      0x03        0x0020      0     0x0001      0x0001
0      0x02        0x0010      -     0x0000      0x0007
0      0x00        0x0011      -     0x0000      0x0008
)");
    EXPECT_EQ(import("REG = 0x3600, 1", {"PGA", "--paged"}).exitCode, kExitRefused) << "too wide";
}

TEST_F(Import, WhatARecordCannotSayIsRefusedWithItsLine) {
    using Row = std::tuple<char const*, char const*>; // null: it fits
    for (auto const& [line, told] :
         {Row{"REG = 0x3000, 0xFFFF", nullptr},
          {"REG = 0x3000,0x12345", "\"REG=0x3000,0x12345\": the record would hold the value 0x2345"},
          {"REG = 0x13000, 1", "address 0x3000 instead of 0x13000; --paged"},
          {"VAR = 31, 0x3FF, 0xFFFF", nullptr},
          {"VAR = 40,0x1234,0x54321", "the id 0x08 instead of 0x28"},
          {"VAR = 18, 0x400, 1", "the address 0x00 instead of 0x400"},
          {"VAR = 18, 0x42, 1, 0x54321", "0x54321 is more than 2 bytes can hold"},
          {"VAR8 = 18, 0x42, 0x100", "0x100 is more than 1 byte can hold"},
          {"MEM32 = 4, 0x12345678, -1", nullptr},
          {"MEM32 = 4, 0x100, 0x100000001", "a number has more than 32 bits"},
          {"BITFIELD = 0x20, 0xFFFFFFFFFFFFFFFFF, 1", "a number has more than 32 bits"}}) {
        write(imageOf({}));
        Outcome const outcome = import(std::string("REG = 1, 2\n") + line);
        EXPECT_EQ(outcome.exitCode, told ? kExitRefused : kExitDone) << line << outcome.complaint;
        EXPECT_SAYS(outcome.complaint, told ? told : "");
        EXPECT_EQ(read() == imageOf({}), told != nullptr) << line;
    }
}

TEST_F(Import, ALabelNamesTheRecordAndAnOlderOneOfThatNameGoes) {
    write(imageOf({recordOf(kRecordPga, {}, "line 7"), recordOf(kRecordPga, {}, "Lens Cor")}));
    Outcome const outcome = import("REG = 1, 2", {"PGA", "--label", "Line 7"});
    EXPECT_EQ(outcome.exitCode, kExitDone);
    EXPECT_SAYS(outcome.complaint, "--sensor PROFILE adds");
    EXPECT_EQ(outcome.complaint.find("--label"), std::string::npos);
    EXPECT_EQ(run({"list"}).output, "0x0005  PGA           9     \"Lens Cor\"\n"
                                    "0x0011  PGA           16    \"Line 7\"\n");
    EXPECT_SAYS(import("REG = 1, 2").complaint, "--label NAME names it");
    EXPECT_EQ(import("REG = 1, 2", {"CCM"}).complaint, "");
}

TEST_F(Import, ForASensorTheRecordSwitchesTheCorrectionAndHoldsOnlyWhatWasTold) {
    struct Row {
        char const* profile;
        char const* lines;
        char const* shown;
        char const* note = "";
    };
    for (Row const& row : {Row{"polynomial", "REG = 0, 0x3784, 0x21C\nREG = 0, 0x3602, 7", R"(
0      0x00        0x3780      2     0x8000      0x0000
0      0x00        0x3602      -     0x0000      0x0007
0      0x00        0x3784      -     0x0000      0x021C
0      0x00        0x3780      2     0x8000      0x0001
(Add)"},
                           {"automatic-76", "REG = 0, 0x3782, 0x280\nREG = 0, 0x3B00, 0xAF0\n", R"(
1      0x12        0x00BE      2     0x0001      0x0000
0      0x00        0x3B00      -     0x0000      0x0AF0
1      0x12        0x00BE      2     0x0002      0x0001
1      0x12        0x00BE      2     0x0001      0x0001
1      0x0C        0x000A      1     0x0000      0x00FF
(Add)",
                            "leave out 1 line of the section, the first is \"REG=0, 0x3782"}}) {
        write(imageOf({}));
        Outcome const outcome = import(row.lines, {"PGA", "--sensor", row.profile});
        EXPECT_EQ(outcome.exitCode, kExitDone);
        EXPECT_SAYS(outcome.complaint, row.note);
        EXPECT_SAYS(run({"show", "5"}).output, row.shown);
    }
    for (auto const& [line, why] :
         {std::pair{"REG = 0x1234, 1", "the line \"REG=0x1234, 1\": the sensor has no register"},
          {"REG = 0x3602, 0x10000", "of 16 bits, has no room for 0x10000"},
          {"BITFIELD = 0x3780, 0x8000, 2", "has no room for 0x0002"},
          {"REG = 0x3602, 0x100000000", "more than 32 bits"},
          {"STATE = Gamma, 9", "no line of a register"}}) {
        write(imageOf({}));
        Outcome const outcome = import(line, {"PGA", "--sensor", "polynomial"});
        EXPECT_EQ(outcome.exitCode, kExitRefused);
        EXPECT_SAYS(outcome.complaint, why);
        EXPECT_EQ(read(), imageOf({}));
    }
    EXPECT_EQ(import("REG = 0x3602, 1", {"CCM", "--sensor", "polynomial"}).exitCode, kExitRefused);
    EXPECT_EQ(import("REG = 0x3602, 1", {"PGA", "--sensor", "none"}).exitCode, kExitUnusable);
}

TEST_F(ImageUnderTest, ARefusedCommandTellsWhyAndLeavesTheFileAsItWas) {
    std::string many = "STATE = none,1\n";
    for (int i = 0; i < 500; ++i)
        many += "MEM32 = 4, 0x100, 1\n";
    // FILE stands for the file of the lines, SECTION for the name of its section.
    using Row = std::tuple<char const*, QString, ExitCode, char const*>;
    for (auto const& [lines, words, exitCode, why] : std::vector<Row>{
             {"REG = 1, 2", "import FILE Nowhere PGA", kExitRefused, "has no section [Nowhere]"},
             {"REG = 1, 2", "import FILE SECTION 16", kExitRefused, "holds no registers"},
             {"REG 1 2", "import FILE SECTION PGA", kExitRefused, "no line that a record PGA can hold"},
             {"STATE = WB Speed,1", "import FILE SECTION PGA", kExitRefused, "no line that"},
             {"STATE = WB Speed,1\nREG = 1, 2", "import FILE SECTION SWCCM", kExitRefused, "mixes"},
             {"REG = 1, 2\nSTATE = WB Speed,1", "import FILE SECTION SWCCM", kExitRefused, "mixes"},
             {many.c_str(), "import FILE SECTION PGA", kExitRefused, "does not fit: 8149 bytes"},
             {"", "import nowhere.ini SECTION PGA", kExitUnusable, "nowhere.ini: cannot be read: "},
             {"", "import . SECTION PGA", kExitUnusable, "no regular file"},
             {"", "delete CCM", kExitRefused, "there is no record CCM"},
             {"", "delete PGA Other", kExitRefused, "there is no record PGA named \"Other\""},
             {"", "delete 16 Other", kExitRefused, "have no name"},
         }) {
        Bytes const before = imageOf({recordOf(kRecordPga, {3, 0, 4, 1, 2, 3, 4}, "Lens Cor"),
                                      textRecord(kRecordTimeStamp, "2024/05/31 23:5"), recordOf(77, {})});
        write(before);
        QStringList command = words.split(' ');
        command.replaceInStrings(QStringLiteral("FILE"), preset(lines));
        command.replaceInStrings(QStringLiteral("SECTION"), QStringLiteral("Lens Correction"));
        Outcome const outcome = run(command);
        EXPECT_EQ(outcome.exitCode, exitCode) << why;
        EXPECT_SAYS(outcome.complaint, why);
        EXPECT_EQ(read(), before) << why;
    }
}

TEST_F(ImageUnderTest, DeleteTakesTheFirstOfTheTypeOrTheNamedOneAndTellsWhatIsLeft) {
    write(imageOf({recordOf(kRecordPga, {}, "First"), recordOf(kRecordPga, {}, "Second"), recordOf(77, {}),
                   recordOf(kRecordPga, {}, "Third")}));
    EXPECT_EQ(run({"delete", "8", "second"}).output,
              "deleted\n0x0011  PGA           9     \"Second\"\n2 records of this type left\n");
    EXPECT_EQ(run({"delete", "pga"}).output,
              "deleted\n0x0005  PGA           9     \"First\"\n1 record of this type left\n");
    EXPECT_EQ(run({"delete", "77"}).exitCode, kExitDone);
    EXPECT_EQ(run({"list"}).output, "0x0005  PGA           9     \"Third\"\n");
}

TEST_F(ImageUnderTest, FormatCreatesAnErasedDeviceAndKeepsTheBytesOfAnOldOne) {
    EXPECT_EQ(run({"format"}).output, "created and formatted\n");
    EXPECT_EQ(run({"list"}).output, "no records\n");
    Bytes expected(8192, 0xFF);
    Bytes const header = {'V', 'Y', 'E', 'E', 1};
    std::copy(header.begin(), header.end(), expected.begin());
    EXPECT_EQ(read(), expected);

    Bytes old = imageOf(recordsOfEveryKind());
    write(old);
    EXPECT_EQ(run({"format"}).output, "formatted\n5 records can no longer be reached\n");
    old[5] = 0xFF;
    EXPECT_EQ(read(), old);
}

#ifdef Q_OS_UNIX
TEST_F(ImageUnderTest, AWriteThatFailsHalfWayLeavesTheFileAsItWas) {
    Bytes const before = imageOf({recordOf(77, {})});
    write(before);
    rlimit const full{100, RLIM_INFINITY};
    rlimit unlimited{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    auto const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    Outcome const outcome = run({"delete", "77"});
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    (void)std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(outcome.exitCode, kExitUnusable);
    EXPECT_SAYS(outcome.complaint, "cannot be written");
    EXPECT_TRUE(outcome.output.empty());
    EXPECT_EQ(read(), before);
}
#endif
} // namespace
