#include "tests/support/solver_sensor.h"

#include <gtest/gtest.h>
#include <span>

namespace {
sf_Handle* create(QByteArray const& block) { return sf_Create2(block.constData(), 50, 1, 0xFFFFFFFF); }

// Each row replaces one text of a correct block.
struct Fault {
    char const* from;
    char const* to;
    char const* named;
};

constexpr Fault kFaults[] = {
    {"sensor-layout-1", "sensor-layout-2", "first line"},
    {"\"height\": 360", "\"height\": 47", "height: 47 lies outside"},
    {"\"input\": \"bayer\"", "\"input\": \"other\"", "input: \"other\" is none of"},
    {"\"whiteLevel\": 4095", "\"whiteLevel\": 168", "whiteLevel: it is not above"},
    {"\"input\": \"bayer\"", "\"input\": \"ycbcr\"", "sampleBytes: only Bayer"},
    {"\"greenBlue\"", "\"green\"", "correction.banks[0].planes: the key \"greenBlue\" is missing"},
    {"\"stride\": 2", "\"stride\": 400000000", "stride: 400000000 lies outside"},
    {"\"slot\": 0", "\"slot\": 1", "slot: 1 is none of"},
    {"\"originRow\"", "\"origin\"", "correction: the key \"originRow\""},
    {"}", "", "sensor data: line "},
};

constexpr Fault kTableFaults[] = {
    {"\"slot\": 4", "\"slot\": 3", "correction.banks[3].slot: 3 occurs twice"},
    {"\"address\": 16132", "\"address\": 4294967295", "correction.banks[1].originRow.address"},
};

void expectNamed(std::span<Fault const> faults, QByteArray const& good) {
    ASSERT_TRUE(Handle(create(good)));
    for (Fault const& fault : faults) {
        SCOPED_TRACE(fault.named);
        WarningLog const log;
        QByteArray bad = good;
        ASSERT_TRUE(bad.contains(fault.from));
        EXPECT_EQ(create(bad.replace(fault.from, fault.to)), nullptr);
        EXPECT_TRUE(log.has(fault.named)) << log.all().constData();
    }
}

TEST(Layout, FaultsAreNamedWithTheirPlace) {
    expectNamed(kFaults, TestSensor().layout());
    expectNamed(kTableFaults, TestSensor{.bankSlots = {0, 2, 3, 4}, .tablesHaveOrigins = true}.layout());
}

TEST(Layout, ForeignDataIsNotReadBeyondTheFirstDifference) {
    WarningLog const log;
    std::unique_ptr<char[]> const foreign(new char[4]{'s', 'e', 'n', '\0'});
    EXPECT_EQ(sf_Create2(foreign.get(), 50, 1, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(sf_Create2(nullptr, 50, 1, 0xFFFFFFFF), nullptr);
    EXPECT_TRUE(log.has("there is no sensor data"));
}

TEST(Layout, IsFoundBesideTheLibraryByKindAndVariant) {
    EXPECT_TRUE(Handle(sf_Create(68, 1, -1)));
    WarningLog const log;
    EXPECT_EQ(sf_Create(50123, 8, -1), nullptr);
    EXPECT_TRUE(log.has("50123-8.layout"));
}
} // namespace
