#include "tests/solver/correction.h"
#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <gtest/gtest.h>

namespace {
constexpr uint32_t kKelvin[] = {0, 0, 2900, 4000, 6500}; // by slot

/// The same lens in the light of a slot: its colour shading changes.
Response inLightOf(TestSensor const& sensor, uint32_t slot) {
    return SyntheticLens{SyntheticLens::Shape::CosineFourth, 2.2, 0.1 * slot - 0.1, 0.05, 0}.response(sensor);
}

// Solved for the base alone.
Handle withBase(TestSensor const& sensor) {
    Handle handle = open(sensor);
    EXPECT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, 3))));
    EXPECT_EQ(findSolution(handle), 0);
    return handle;
}

using FindTable = int (*)(sf_Handle*, sf_ApgaParams const*);

void addTables(Handle const& handle, TestSensor const& sensor, FindTable findTable) {
    for (uint32_t const slot : {2u, 4u, 3u}) {
        ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, slot))));
        sf_ApgaParams const params = tableParams(slot, kKelvin[slot]);
        ASSERT_EQ(findTable(handle.get(), &params), 0);
    }
}

void expectFlat(TestSensor const& sensor, std::vector<sf_RegEntry> const& list, bool withBase) {
    Correction const correction(sensor, list);
    for (uint32_t const slot : {2u, 3u, 4u}) {
        auto const banks = withBase ? std::vector<uint32_t>{0, slot} : std::vector<uint32_t>{slot};
        FieldQuality const quality = measure(sensor, after(inLightOf(sensor, slot), correction, banks));
        EXPECT_LE(quality.colourDeviation, 1.0) << "slot " << slot;
        EXPECT_LE(quality.worstLuminance, 0.015) << "slot " << slot;
    }
}

TEST(Illuminants, TablesCorrectWhatTheBaseLeaves) {
    TestSensor const sensor{.bankSlots = {0, 2, 3, 4}};
    Handle const handle = withBase(sensor);
    addTables(handle, sensor, sf_FindApga);
    auto const list = registers(handle);
    ASSERT_EQ(list.size(), 2u + 100 + 3 * 101);
    expectFlat(sensor, list, true);
    for (uint32_t const slot : {2u, 3u, 4u}) {
        sf_RegEntry const& temperature = list[101 + (slot - 1) * 101];
        EXPECT_EQ(temperature.second, temperatureAddress(slot));
        EXPECT_EQ(temperature.third, kKelvin[slot]);
    }
}

TEST(Illuminants, FullTablesNeedNoBase) {
    // Also where the sensor has a base, an earlier one must not stay in the list.
    for (auto const& bankSlots : {std::vector<int>{2, 3, 4}, std::vector<int>{0, 2, 3, 4}}) {
        TestSensor const sensor{.bankSlots = bankSlots};
        Handle const handle = bankSlots.front() == 0 ? withBase(sensor) : open(sensor);
        addTables(handle, sensor, sf_FindAutoPga);
        auto const list = registers(handle);
        EXPECT_EQ(list.size(), 2u + 3 * 101);
        expectFlat(sensor, list, false);
    }
}

// Sensors differ in what they ask for beside the coefficients; the origin must come before them, or the
// sensor would show a table around the wrong place meanwhile.
TEST(Illuminants, TablesCarryTheirOwnOriginAndOnlyATemperatureThatIsAskedFor) {
    TestSensor const sensor{
        .bankSlots = {2, 3, 4}, .tablesHaveOrigins = true, .tablesHaveTemperatures = false};
    Handle const handle = open(sensor);
    addTables(handle, sensor, sf_FindAutoPga);
    auto const list = registers(handle);
    ASSERT_EQ(list.size(), 2u + 3 * 102);
    for (uint32_t const slot : {2u, 3u, 4u}) {
        sf_RegEntry const* const table = &list[2 + (slot - 2) * 102];
        EXPECT_EQ(table[0].second, originColumnAddress(slot));
        EXPECT_EQ(table[0].third, 320u);
        EXPECT_EQ(table[1].second, originRowAddress(slot));
        EXPECT_EQ(table[1].third, 180u);
        EXPECT_EQ(table[2].second, planeAddress(slot, 0));
    }
}

TEST(Illuminants, NoSlotLeavesTheSolutionAsItIsAndAFailureNoHalfOne) {
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
} // namespace
