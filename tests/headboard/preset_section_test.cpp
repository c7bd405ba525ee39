#include "headboard/preset_section.h"

#include "tests/headboard/headboard_fixture.h"

#include <QTemporaryDir>
#include <fstream>

using namespace kestra;

namespace {
struct PresetSection : ::testing::Test, Headboard {
    PresetSection() { EXPECT_EQ(EepromFormat(*eeprom, -1), kEepromOk); }
    int32_t import(std::string const& lines, uint8_t type, std::string const& section = "Lens Correction") {
        std::ofstream(ini()) << "[Other]\nREG = 9, 9\n[" + section + "]\n" + lines + "\n[Last]\nREG = 8, 8\n";
        return EepromImportSection(*eeprom, ini().c_str(), section.c_str(), type);
    }
    std::string ini() const { return m_folder.filePath(QStringLiteral("preset.ini")).toStdString(); }

    std::vector<RegisterEntry> entries() const { return entriesOf(eeprom, readRecord(eeprom, 5)); }
    std::vector<std::string> lines() {
        std::vector<std::string> found;
        std::string line;
        std::vector<uint8_t> const record = readRecord(eeprom, 5);
        while (EepromGetLine(record, int32_t(found.size()), &line) >= 0)
            found.push_back(line);
        return found;
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(PresetSection, EveryFormOfLineIsTaken) {
    fake.hasDescription = false; // so that sizes are the lines' own
    using Row = std::tuple<char const*, std::vector<RegisterEntry>>;
    for (auto const& [line, stored] : std::vector<Row>{
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
         }) {
        ASSERT_EQ(EepromFormat(*eeprom, -1), kEepromOk);
        ASSERT_EQ(import(line, kRecordPga), kEepromOk) << line;
        EXPECT_EQ(entries(), stored) << line;
        EXPECT_EQ(EepromRecordText(*eeprom, 5), "Lens Cor");
    }
}

TEST_F(PresetSection, StatesAreTakenByTheTypesThatKnowThem) {
    std::string const states = "STATE = Lens Curve Red, 1, 2 // comment\nSTATE=lens correction falloff,80\n"
                               "STATE = WB Speed, 3\nSTATE = WB Custom Led,1\nSTATE = Stereo Shift Y, -4\n"
                               "STATE = Gamma, 9\nSTATE = " +
                               std::string(80, 'x') + "\n";
    using Lines = std::vector<std::string>;
    for (auto const& [type, expected] :
         std::map<uint8_t, Lines>{{kRecordSwPga, {"Lens Curve Red, 1, 2", "lens correction falloff,80"}},
                                  {kRecordSwCcm, {"WB Speed, 3", "WB Custom Led,1"}},
                                  {kRecordSwStereo, {"Stereo Shift Y, -4"}},
                                  {kRecordCcm, {}}}) {
        ASSERT_EQ(EepromFormat(*eeprom, -1), kEepromOk);
        ASSERT_EQ(import(states, type), kEepromOk);
        EXPECT_EQ(lines(), expected) << int(type);
    }
}

TEST_F(PresetSection, WhatCannotBeStoredWholeIsNotStored) {
    EXPECT_EQ(EepromImportSection(*eeprom, ini().c_str(), "Lens Correction", kRecordPga), kEepromFailed);
    EXPECT_EQ(import("REG = 1, 2", kRecordTimeStamp), kEepromFailed);
    EXPECT_EQ(import("STATE = WB Speed, 3\nREG = 1, 2", kRecordSwCcm), kEepromFailed);
    EXPECT_EQ(EepromFindRecord(*eeprom, kRecordEnd, nullptr, 0), 5);
    // Long sections are read whole.
    EXPECT_EQ(import(std::string(70000, '\n') + "; " + std::string(70000, 'x') + "\nnothing " +
                         std::string(70000, 'x') + "\nREG = 1, 2",
                     kRecordPga),
              kEepromOk);
    EXPECT_EQ(entries().size(), 1U);
}

// A record's capacity is 64 bytes below the device, and 11 bytes before it no entry is taken any more: behind
// the name, 2023 registers of 4 bytes go in. The device has room for more.
TEST_F(PresetSection, IsRefusedWhereTheRecordEndsNotWhereTheDeviceDoes) {
    std::string registers;
    for (int i = 0; i < 2023; ++i)
        registers += "REG = " + std::to_string(i) + ", 1\n";
    EXPECT_EQ(import(registers + "REG = 2023, 1", kRecordPga), kEepromNoRoom);
    EXPECT_EQ(EepromFindRecord(*eeprom, kRecordEnd, nullptr, 0), 5);
    EXPECT_EQ(import(registers, kRecordPga), kEepromOk);
    EXPECT_EQ(EepromFindRecord(*eeprom, kRecordEnd, nullptr, 0), 5 + 3 + 9 + 3 + 4 * 2023);
}
} // namespace
