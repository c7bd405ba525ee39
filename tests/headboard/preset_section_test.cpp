#include "headboard/preset_section.h"

#include "tests/headboard/headboard_fixture.h"

#include <QTemporaryDir>
#include <fstream>

using namespace kestra;

namespace {
struct PresetSection : ::testing::Test, Headboard {
    // The lines between others, into a new chain, which stays empty where that fails.
    int32_t import(std::string const& lines, uint8_t type = kRecordPga) {
        format();
        std::ofstream(ini) << "[Other]\nREG = 9, 9\n[Lens Correction]\n" + lines + "\n[Last]\nREG = 8, 8\n";
        EepromStatus const status = EepromImportSection(*eeprom, ini.c_str(), "Lens Correction", type);
        EXPECT_TRUE(status == kEepromOk || end() == 5);
        return status;
    }

    QTemporaryDir folder;
    std::string const ini = folder.filePath("preset.ini").toStdString();
};

TEST_F(PresetSection, EveryFormOfLineIsTaken) {
    fake.hasDescription = false; // so that sizes are the lines' own
    std::pair<char const*, std::vector<RegisterEntry>> const rows[] = {
        {"REG = 4660, 13", {{0, 0, 4660, 1, 0, 13}}},
        {"REG=3,0x20,0xFFFF // comment", {{0, 0, 0x20, 1, 0, 0xFFFF}}}, // a short entry holds no page
        {"BITFIELD = 3, 0x20, 0x8000, 1", {{0, 3, 0x20, 0, 0x8000, 1}}},
        {"BITFIELD = 0x20, 0x8000, 1 ; comment", {{0, 0, 0x20, 0, 0x8000, 1}}},
        {"VAR = 18, 0x42, 5", {{1, 18, 0x42, 2, 0, 5}}},
        {"VAR = 18, 0x42, 3, 5", {{1, 18, 0x42, 2, 3, 5}}},
        {"VAR8 = 18, 0x42, 5", {{1, 18, 0x42, 1, 0, 5}}},
        {"SFR = 0x1070, 5", {{2, 2, 0x1070, 0, 0, 5}}},
        {"SFR8 = 0x1070, 1, 5", {{2, 2, 0x1070, 1, 1, 5}}},
        {"MEM = 4, 0x100, 5", {{2, 4, 0x100, 0, 0, 5}}},
        {"MEM8 = 4, 0x100, 1, 5", {{2, 4, 0x100, 1, 1, 5}}},
        {"MEM32 = 4, 0x100, -1", {{2, 4, 0x100, 4, 0, 0xFFFFFFFF}}},
        {"REG = 010, 1, x", {{0, 0, 8, 1, 0, 1}}}, // two numbers, octal, and something else
        {"REG = 1\nREG 1, 2\nREGS = 1, 2\nVAR = 1, 2\nSTATE = White Balance, 1\n// REG = 1, 2\nx", {}},
    };
    for (auto const& [line, stored] : rows) {
        ASSERT_EQ(import(line), kEepromOk) << line;
        EXPECT_EQ(entries(record(5)), stored) << line;
        EXPECT_EQ(EepromRecordText(*eeprom, 5), "Lens Cor");
    }
}

TEST_F(PresetSection, StatesAreTakenByTheTypesThatKnowThem) {
    std::string const states = "STATE = Lens Curve Red, 1, 2 // comment\nSTATE=lens correction falloff,80\n"
                               "STATE = WB Speed, 3\nSTATE = WB Custom Led,1\nSTATE = Stereo Shift Y, -4\n"
                               "STATE = Gamma, 9\nSTATE = " +
                               std::string(80, 'x') + "\n";
    std::pair<uint8_t, std::vector<std::string>> const rows[] = {
        {kRecordSwPga, {"Lens Curve Red, 1, 2", "lens correction falloff,80"}},
        {kRecordSwCcm, {"WB Speed, 3", "WB Custom Led,1"}},
        {kRecordSwStereo, {"Stereo Shift Y, -4"}},
        {kRecordCcm, {}}};
    for (auto const& [type, expected] : rows) {
        ASSERT_EQ(import(states, type), kEepromOk);
        std::vector<std::string> lines;
        for (std::string line; EepromGetLine(record(5), int32_t(lines.size()), &line) >= 0;)
            lines.push_back(line);
        EXPECT_EQ(lines, expected) << int(type);
    }
}

// A record's capacity is 64 bytes below the device, and 11 bytes before it no entry is taken any more: behind
// the name, 2023 registers of 4 bytes go in. The device has room for more.
TEST_F(PresetSection, WhatCannotBeStoredWholeIsNotStored) {
    format();
    EXPECT_EQ(EepromImportSection(*eeprom, ini.c_str(), "Lens Correction", kRecordPga), kEepromFailed);
    EXPECT_EQ(import("REG = 1, 2", kRecordTimeStamp), kEepromFailed);
    EXPECT_EQ(import("STATE = WB Speed, 3\nREG = 1, 2", kRecordSwCcm), kEepromFailed);
    std::string most;
    for (int i = 0; i < 2023; ++i)
        most += "REG = " + std::to_string(i) + ", 1\n";
    EXPECT_EQ(import(most + "REG = 2023, 1"), kEepromNoRoom);
    // Long sections and lines are read whole.
    std::string const remark(70000, 'x');
    EXPECT_EQ(import(std::string(70000, '\n') + "; " + remark + "\nnothing " + remark + '\n' + most),
              kEepromOk);
    EXPECT_EQ(end(), 5 + 3 + 9 + 3 + 4 * 2023);
}
} // namespace
