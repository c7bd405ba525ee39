#include "tests/solver/correction.h"
#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>

namespace {
constexpr uint32_t kKelvin[] = {0, 0, 2900, 4000, 6500}; // by slot

/// The same lens in the light of a slot: its colour shading changes.
Response inLightOf(TestSensor const& sensor, uint32_t slot) {
    return SyntheticLens{SyntheticLens::Shape::CosineFourth, 2.2, 0.1 * slot - 0.1, 0.05, 0}.response(sensor);
}

using FindTable = int (*)(sf_Handle*, sf_ApgaParams const*);

void addTables(Handle const& handle, TestSensor const& sensor, FindTable findTable) {
    for (uint32_t const slot : {2u, 4u, 3u}) {
        ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, slot))));
        sf_ApgaParams const params = tableParams(slot, kKelvin[slot]);
        ASSERT_EQ(findTable(handle.get(), &params), 0);
    }
}

// Sensors differ in what they ask for beside the coefficients; the origin must come before them, or the
// sensor would show a table around the wrong place meanwhile.
void expectComplete(TestSensor const& sensor, sf_RegEntry const* table, uint32_t slot) {
    if (sensor.tablesHaveOrigins) {
        EXPECT_EQ(table[0].second, originColumnAddress(slot));
        EXPECT_EQ(table[0].third, 320u);
        EXPECT_EQ(table[1].second, originRowAddress(slot));
        EXPECT_EQ(table[1].third, 180u);
        table += 2;
    }
    EXPECT_EQ(table[0].second, planeAddress(slot, 0));
    if (sensor.tablesHaveTemperatures) {
        EXPECT_EQ(table[100].second, temperatureAddress(slot));
        EXPECT_EQ(table[100].third, kKelvin[slot]);
    }
}

TEST(Tables, CorrectWhatTheBaseLeavesOrNeedNone) {
    struct Row {
        TestSensor sensor;
        FindTable findTable;
        size_t before; ///< entries of the list before the tables
        size_t each;
    };
    std::vector<int> const all{0, 2, 3, 4};
    Row const rows[] = {
        {{.bankSlots = all}, sf_FindApga, 102, 101},
        {{.bankSlots = all, .tablesHaveOrigins = true}, sf_FindAutoPga, 2, 103}, // the base must not stay
        {{.bankSlots = {2, 3, 4}, .tablesHaveTemperatures = false}, sf_FindAutoPga, 2, 100},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.each);
        Handle const handle = open(row.sensor);
        ASSERT_TRUE(setImage(handle, row.sensor, expose(row.sensor, inLightOf(row.sensor, 3))));
        if (row.sensor.bankSlots == all) {
            ASSERT_EQ(findSolution(handle), 0);
        }
        addTables(handle, row.sensor, row.findTable);
        auto const list = registers(handle);
        ASSERT_EQ(list.size(), row.before + 3 * row.each);
        Correction const correction(row.sensor, list);
        for (uint32_t const slot : {2u, 3u, 4u}) {
            SCOPED_TRACE(slot);
            expectComplete(row.sensor, &list[row.before + (slot - 2) * row.each], slot);
            auto const banks =
                row.findTable == sf_FindApga ? std::vector<uint32_t>{0, slot} : std::vector<uint32_t>{slot};
            expectWithin(measure(row.sensor, after(inLightOf(row.sensor, slot), correction, banks)),
                         {0.01, 0.01});
        }
    }
}

TEST(Tables, NoSlotLeavesTheSolutionAsItIsAndAFailureNoHalfOne) {
    WarningLog const log;
    TestSensor const sensor;
    Handle const handle = open(sensor);
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, 3))));
    sf_ApgaParams const params = tableParams(2, 2900);
    EXPECT_EQ(sf_FindApga(handle.get(), &params), -1);
    EXPECT_TRUE(log.has("no base solution"));
    ASSERT_EQ(findSolution(handle), 0);
    sf_ApgaParams const noSlot = tableParams(0, 4000);
    EXPECT_EQ(sf_FindApga(handle.get(), &noSlot), 0);
    EXPECT_EQ(registers(handle).size(), 102u);
    EXPECT_EQ(sf_FindApga(handle.get(), &params), -1);
    EXPECT_TRUE(log.has("no table for illuminant slot 2"));
    EXPECT_EQ(sf_DumpRegList(handle.get()), nullptr);
    EXPECT_EQ(sf_FindAutoPga(handle.get(), &params), -1);
}

std::vector<sf_RegEntry> entriesOf(QByteArray const& presetText) {
    std::vector<sf_RegEntry> entries;
    for (QByteArray const& line : presetText.split('\n'))
        if (int id, address, value; std::sscanf(line, "REG = %i, %i, %i", &id, &address, &value) == 3)
            entries.push_back({uint32_t(id), uint32_t(address), uint32_t(value)});
    return entries;
}

TEST(PresetFile, GivesBackTheListInBothFormatsAndIsNotClaimedWhenNothingWasWritten) {
    QTemporaryDir const folder;
    QByteArray const path = folder.filePath("lens.ini").toLocal8Bit();
    TestSensor const sensor{.bankSlots = {0, 2, 3, 4}, .tablesHaveOrigins = true};
    Handle const handle = open(sensor);
    WarningLog const log;
    EXPECT_NE(sf_DumpRegFile(handle.get(), path.constData(), 0, 0, 0), 0) << "unsolved";
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, 3))));
    ASSERT_EQ(findSolution(handle, 95), 0);
    addTables(handle, sensor, sf_FindApga);
    EXPECT_NE(sf_DumpRegFile(handle.get(), path.constData(), 1, 0, 0), 0) << "of no format";
    EXPECT_NE(sf_DumpRegFile(handle.get(), nullptr, 0, 0, 0), 0);
    EXPECT_NE(sf_DumpRegFile(handle.get(), (path + "/none/lens.ini").constData(), 0, 0, 0), 0);
    EXPECT_TRUE(log.has("cannot be written"));
    QFile file(QFile::decodeName(path));
    EXPECT_FALSE(file.exists());
    auto const list = registers(handle);
    for (uint32_t const format : {0u, 2u}) {
        ASSERT_EQ(sf_DumpRegFile(handle.get(), path.constData(), format, 0, 0), 0);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray const text = file.readAll();
        file.close();
        auto const entries = entriesOf(text);
        ASSERT_EQ(entries.size(), list.size());
        EXPECT_EQ(std::memcmp(entries.data(), list.data(), list.size() * sizeof list[0]), 0);
        EXPECT_TRUE(text.startsWith("[Lens Correction]\n; sensor kind 50, variant 1\n; corners at 95 % of"));
        EXPECT_EQ(text.contains("; illuminant slot 2, 2900 K\n"), format == 2);
    }
}
} // namespace
