#include "tests/tools/image_fixture.h"

#include <random>
#include <span>

using namespace kestra;

namespace {
std::vector<EepromRecord> timeStamps(size_t count) {
    return std::vector<EepromRecord>(count, textRecord(kRecordTimeStamp, "2024/05/31 23:59:07"));
}

Bytes changed(Bytes image, size_t offset, Bytes const& bytes) {
    std::copy(bytes.begin(), bytes.end(), image.begin() + std::ptrdiff_t(offset));
    return image;
}

TEST_F(ImageUnderTest, CheckNamesEveryDamageAndItsPlaceOnlyRemarksWhatIsUnusualAndPraisesTheRest) {
    struct Row {
        Bytes image;
        char const* finding;
        bool isDamage = true;
    };
    Bytes const good = imageOf(timeStamps(2)), named = imageOf({recordOf(kRecordPga, {}, "Abc")});
    for (Row const& row : std::vector<Row>{
             {imageOf(recordsOfEveryKind()),
              "0x0094: remark: the record's type is not known here\n"
              "5 records, 149 bytes used, 8022 available\nall is well\n",
              false},
             // The unused bytes of a register set end its blocks, those of a text end it, and values may have
             // all bits set.
             {imageOf({recordOf(kRecordPga, {3, 0, 4, 0, 0x20, 0, 7, 0xFF, 0xFF}), recordOf(kRecordCcm, {})}),
              "all is well", false},
             {imageOf({recordOf(kRecordLensType, {'x', 0, 0xFF, 0xFF}),
                       recordOf(kRecordPga, {3, 0, 4, 0, 0x20, 0xFF, 0xFF})}),
              "all is well", false},
             {Bytes(8192, 0xFF), "0x0000: the image is erased, not formatted"},
             {changed(good, 0, {'V', 'Y', 'E', 0}), R"(it begins with "VYE\x00", not with "VYEE")"},
             {changed(good, 28, {kRecordTimeStamp, 0x20, 0x00}),
              "0x001C: the record Time Stamp, length 8192, runs past the end of the store by 47 bytes"},
             {changed(good, 28, {77, 0x1F, 0xD1, 1}), "0x1FF0: the chain runs into the end of the store"},
             {changed(changed(good, 28, {77, 0x1F, 0xCF}), 8174, {5}),
              "0x1FEE: the record SFR_DATA has no length"},
             {imageOf({recordOf(kRecordLensType, {})}), "0x0005: the text has no closing NUL"},
             {changed(imageOf({recordOf(kRecordPga, {})}), 7, {8}), "too short for its name"},
             {imageOf({recordOf(kRecordPga, {3, 0, 4, 1, 2, 3, 4, 2, 0, 19, 1})}),
              "0x0018: the block is 18 bytes longer than the rest of its record"},
             {imageOf({recordOf(kRecordPga, {3, 0, 5, 1, 2, 3, 4, 5})}), "leaves a part of an entry"},
             {imageOf({recordOf(kRecordPga, {3, 0, 4, 1, 2, 3, 4, 3, 0})}), "cuts off the block's head"},
             {imageOf({recordOf(kRecordCcm, {'x', 0})}), "0x0011: 0x78 is no kind of entry block"},
             {imageOf({recordOf(kRecordSwCcm, {'x', 0, 'y'})}), "the last line has no closing NUL"},
             // Cuts while a record was written into erased bytes: behind its head, in its name, in and behind
             // a block.
             {changed(imageOf({}), 5, {kRecordPga, 1, 0xCE}),
              "0x0008: the record's last 462 bytes are erased: its writing was cut off"},
             {imageOf({recordOf(kRecordPga, Bytes(20, 0xFF), "Abc")}), "0x0011: the record's last 20 bytes"},
             {imageOf({recordOf(kRecordPga, {3, 0, 8, 1, 2, 3, 4, 0xFF, 0xFF, 0xFF, 0xFF})}), "last 4 bytes"},
             {imageOf({recordOf(kRecordLensType, {'x', 0xFF, 0xFF})}), "0x0009: the record's last 2 bytes"},
             {imageOf({recordOf(77, Bytes(20, 0xFF))}), "remark: the record's last 20 bytes", false},
             {changed(imageOf({}), 4, {2}), "version 2 is not known", false},
             {changed(named, 8, {'N', 'i', 'n', 'e', 'B', 'y', 't', 'e', 's'}), "name fills its field",
              false},
             {imageOf({recordOf(kRecordPga, {}, "Abc"), recordOf(kRecordPga, {}, "aBC")}),
              "0x0011: remark: never found: the record at 0x0005 has the same type and name", false},
         }) {
        write(row.image);
        Outcome const outcome = run("check");
        EXPECT_EQ(outcome.exitCode, row.isDamage ? kExitRefused : kExitDone) << row.finding;
        EXPECT_SAYS(outcome.output, row.finding);
        EXPECT_EQ(outcome.output.find("all is well") == std::string::npos, row.isDamage) << row.finding;
    }
}

// The plug-in never reads that byte: its chain may end there whatever it holds.
TEST_F(ImageUnderTest, AnEditKeepsTheStoresLastByte) {
    write(changed(changed(imageOf({}), 5, {77, 0x1F, 0xE7}), kStoreSize - 1, {0x55}));
    EXPECT_SAYS(run("check").output, "0x1FEF: remark");
    EXPECT_SAYS(run("check").output, "1 record, 8170 bytes used, 1 available\nall is well\n");
    EXPECT_EQ(run("delete 77").exitCode, kExitDone);
    EXPECT_EQ(read()[kStoreSize - 1], 0x55);
}

TEST_F(ImageUnderTest, WhatIsDamagedIsShownAsFarAsItGoesAndADamagedChainNeverWrittenTo) {
    Bytes const damaged = changed(imageOf(timeStamps(2)), 28, {kRecordTimeStamp, 0x20, 0x00});
    write(damaged);
    preset("REG = 1, 2");
    EXPECT_EQ(run("list").output, "0x0005  Time Stamp    20    \"2024/05/31 23:59:07\"\n");
    EXPECT_EQ(run("show 5").exitCode, kExitDone);
    for (char const* const command :
         {"list", "show 28", "delete Time~Stamp", "import PRESET Lens~Correction PGA"})
        EXPECT_EQ(run(command).exitCode, kExitRefused) << command;
    EXPECT_EQ(read(), damaged);

    write(imageOf({recordOf(kRecordPga, {3, 0, 4, 0, 0x20, 0, 7, 3, 0, 8, 0, 0x30, 0, 9})}));
    Outcome const show = run("show 5");
    EXPECT_EQ(show.exitCode, kExitRefused);
    EXPECT_SAYS(show.output, "0x0030      -     0x0000      0x0009");
    EXPECT_SAYS(show.complaint, "longer than the rest");
    EXPECT_EQ(run("delete PGA").exitCode, kExitDone);
    EXPECT_EQ(run("check").exitCode, kExitDone);
}

TEST_F(ImageUnderTest, GarbageIsReadToItsEndAndEditsOfItLeaveAWholeChain) {
    // What ends or continues a chain is frequent.
    constexpr uint8_t kFrequent[] = {0, 0, 0, 0, 0, 2, 3, 4, 8, 9, 10, 13, 17, 20, 77, 0xFF};
    std::mt19937 random(7);
    preset("REG = 1, 2");
    size_t edits = 0;
    for (int round = 0; round < 400; ++round) {
        Bytes bytes(round % 5 == 0 ? 8 + random() % 200 : 8192, 0xFF);
        for (uint8_t& byte : std::span(bytes).first(std::min(bytes.size(), size_t{8} + random() % 400)))
            byte = round % 3 == 0 ? uint8_t(random()) : kFrequent[random() % std::size(kFrequent)];
        write(round % 4 == 0 ? bytes : changed(bytes, 0, {'V', 'Y', 'E', 'E', 1}));
        bool const isWhole = run("check").output.find(" available\n") != std::string::npos;
        EXPECT_LE(run("show " + QString::number(random() % 8192)).exitCode, kExitRefused);
        for (char const* const edit : {"import PRESET Lens~Correction SWPGA", "delete PGA"}) {
            Bytes const before = read();
            bool const done = run(edit).exitCode == kExitDone;
            edits += done;
            EXPECT_TRUE(done ? isWhole : read() == before);
            EXPECT_EQ(run("list").exitCode, isWhole ? kExitDone : kExitRefused);
        }
    }
    EXPECT_GT(edits, 50U);
}
} // namespace
