#include "tests/support/solver_input.h"

#include <Eigen/Core>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <utility>

namespace {
using Shape = SyntheticLens::Shape;
using RegisterList = std::vector<sf_RegEntry>;

/// A lens without any symmetry, so that no exchange of sides or planes goes unseen.
constexpr SyntheticLens kLopsidedLens{Shape::CosineFourth, 2.5, 0.3, 0.1, -0.06};

/// What a register list makes the sensor multiply its planes by, with the banks of these slots.
Response gainsOf(TestSensor const& sensor, RegisterList const& list,
                 std::vector<uint32_t> const& banks = {0}) {
    std::map<uint32_t, uint32_t> registers;
    for (sf_RegEntry const& entry : list)
        registers[entry.second] = entry.third;
    return [=](Colour colour, double x, double y) {
        constexpr uint32_t kPlanes[] = {1, 0, 2, 3};
        double const u = (x - registers.at(kOriginColumn)) / (0.5 * sensor.width);
        double const v = (y - registers.at(kOriginRow)) / (0.5 * sensor.height);
        double gain = 1;
        for (uint32_t const slot : banks) {
            double sum = 0;
            for (uint32_t i = 0; i < 25; ++i) {
                auto const bits = uint16_t(registers.at(planeAddress(slot, kPlanes[colour]) + 2 * i));
                sum += double(std::bit_cast<Eigen::half>(bits)) * std::pow(u, i / 5) * std::pow(v, i % 5);
            }
            gain *= sum;
        }
        return gain;
    };
}

Response product(Response const& one, Response const& other) {
    return [=](Colour colour, double x, double y) { return one(colour, x, y) * other(colour, x, y); };
}

/// In 32 x 18 blocks of a corrected flat field the largest relative deviation from a block in the middle: of
/// green, or of another plane's ratio to green.
double deviation(TestSensor const& sensor, Response const& field, Colour colour) {
    auto const figure = [&](int column, int row) {
        double const x = (column + 0.5) * sensor.width / 32, y = (row + 0.5) * sensor.height / 18;
        return field(colour, x, y) / (colour == kColourGreen ? 1 : field(kColourGreen, x, y));
    };
    double worst = 0;
    for (int block = 0; block < 32 * 18; ++block)
        worst = std::max(worst, std::abs(figure(block % 32, block / 32) / figure(16, 9) - 1));
    return worst;
}

double colourDeviation(TestSensor const& sensor, Response const& field) {
    bool const hasTwoGreens = std::strcmp(sensor.input, "bayer") == 0;
    return std::max({deviation(sensor, field, kColourRed), deviation(sensor, field, kColourBlue),
                     hasTwoGreens ? deviation(sensor, field, kColourGreenBlue) : 0});
}

void expectFlat(TestSensor const& sensor, Response const& field, double colour, double luminance) {
    EXPECT_LE(colourDeviation(sensor, field), colour);
    EXPECT_LE(deviation(sensor, field, kColourGreen), luminance);
}

RegisterList calibrate(TestSensor const& sensor, Response const& response, Exposure const& exposure = {},
                       uint32_t falloffPercent = 100, uint32_t radius = 0) {
    Handle const handle = open(sensor);
    EXPECT_TRUE(setImage(handle, sensor, expose(sensor, response, exposure), exposure.bayerPhase,
                         exposure.orientation));
    EXPECT_EQ(findSolution(handle, falloffPercent, radius), 0);
    RegisterList const list = registers(handle);
    EXPECT_EQ(list.size(), 102U);
    return list;
}

/// The response as the sensor shows it after a calibration.
Response corrected(TestSensor const& sensor, Response const& response, Exposure const& exposure = {},
                   uint32_t falloffPercent = 100, uint32_t radius = 0) {
    return product(response, gainsOf(sensor, calibrate(sensor, response, exposure, falloffPercent, radius)));
}

TEST(Calibration, FlattensEveryLensOfTheRange) {
    std::pair<SyntheticLens, double> const rows[] = {
        // and what a polynomial of this order can reach
        {{Shape::CosineFourth, 1.1, 0.4, 0.1, 0.1}, 0.01},
        {{Shape::CosineFourth, 4.8, 0.4, 0.1, -0.1}, 0.01},
        {{Shape::RadialPolynomial, 2.5, 0.4, 0.1, 0.1}, 0.025},
        {{Shape::RadialPolynomial, 4.8, 0.4, 0.1, -0.1}, 0.08},
    };
    TestSensor const sensor;
    for (auto const& [lens, luminance] : rows) {
        SCOPED_TRACE(luminance);
        expectFlat(sensor, corrected(sensor, lens.response(sensor)), 0.02, luminance);
    }
}

TEST(Calibration, PutsEveryCodingPhaseAndOrientationInItsPlace) {
    TestSensor const sensors[] = {
        {.width = 400, .height = 300},
        {.width = 400, .height = 300, .sampleBytes = 1, .blackLevel = 10, .whiteLevel = 255},
        {.width = 400, .height = 300, .input = "rgb32", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255},
        {.width = 400, .height = 300, .input = "ycbcr", .sampleBytes = 1, .blackLevel = 0, .whiteLevel = 255},
        {.width = 203, .height = 111},
        {.width = 48, .height = 48},
    };
    for (TestSensor const& sensor : sensors)
        for (unsigned i = 0; i < 16; ++i) {
            SCOPED_TRACE(testing::Message() << sensor.input << ' ' << sensor.width << ' ' << i);
            double const worst = sensor.width < 400 ? 0.03 : 0.01; // few samples hold much noise
            Exposure const exposure{.noise = 0.002, .bayerPhase = i % 4, .orientation = i / 4};
            expectFlat(sensor, corrected(sensor, kLopsidedLens.response(sensor), exposure), worst, worst);
        }
}

TEST(Calibration, MeetsTheAllowedFalloffAndKeepsHighlightsAndTheColourOfTheCentre) {
    constexpr std::pair<uint32_t, double> kRows[] = {
        {100, 1.0}, {75, 0.75}, {110, 1.1}, {0, 0.5}, {400, 1.25}};
    TestSensor const sensor;
    Response const response = kLopsidedLens.response(sensor);
    for (auto const& [percent, corners] : kRows) {
        SCOPED_TRACE(percent);
        Response const gain = gainsOf(sensor, calibrate(sensor, response, {}, percent));
        Response const field = product(response, gain);
        double const centre = field(kColourGreen, 320, 180);
        for (double const x : {0.5, 639.5})
            for (double const y : {0.5, 359.5})
                EXPECT_NEAR(field(kColourGreen, x, y) / centre, corners, 0.01);
        double smallest = 100;
        for (Colour const plane : {kColourRed, kColourGreen, kColourBlue, kColourGreenBlue}) {
            for (int i = 0; i < 64 * 36; ++i)
                smallest = std::min(smallest, gain(plane, 10 * (i % 64) + 5, 10 * (i / 64) + 5));
            EXPECT_NEAR(gain(plane, 320, 180) / gain(kColourGreen, 320, 180), 1, 0.015);
        }
        EXPECT_NEAR(smallest, 1.014, 0.016);
    }
}

TEST(Calibration, SpendsItsOrderWithinTheRadius) {
    TestSensor const sensor;
    Response const hard = SyntheticLens{Shape::RadialPolynomial, 4.8, 0.2, 0, 0}.response(sensor);
    auto const worstOnCircle = [&](double circle, uint32_t radius) {
        Response const field = corrected(sensor, hard, {}, 100, radius);
        double worst = 0;
        for (int i = 0; i < 100; ++i) {
            double const x = 320 + circle * std::cos(i * 0.0628), y = 180 + circle * std::sin(i * 0.0628);
            worst = std::max(worst, std::abs(field(kColourGreen, x, y) / field(kColourGreen, 320, 180) - 1));
        }
        return worst;
    };
    EXPECT_LT(worstOnCircle(140, 150), 0.3 * worstOnCircle(140, 0));
    // A radius that holds few blocks or none must not break the solution.
    for (uint32_t const radius : {1u, 12u, 40u})
        EXPECT_LT(worstOnCircle(20, radius), 0.01) << radius;
}

TEST(Calibration, IsNotMisledByDeviantPixelsAndDust) {
    TestSensor const sensor;
    Response const clean = kLopsidedLens.response(sensor);
    Response const dusty = [&](Colour colour, double x, double y) {
        return clean(colour, x, y) * (std::hypot(x - 200, y - 100) < 12 ? 0.7 : 1.0);
    };
    Response const gains = gainsOf(sensor, calibrate(sensor, dusty, {.deviantPixels = 0.008}));
    expectFlat(sensor, product(clean, gains), 0.01, 0.01);
}

TEST(Calibration, EveryRegisterMattersForTheFigure) {
    TestSensor const sensor;
    Response const response = kLopsidedLens.response(sensor);
    auto const list = calibrate(sensor, response);
    auto const figureOf = [&](RegisterList const& registers) {
        return colourDeviation(sensor, product(response, gainsOf(sensor, registers)));
    };
    double const good = figureOf(list);
    auto permuted = list;
    for (size_t i = 2; i + 1 < list.size(); ++i)
        permuted[i].third = list[i + 1].third;
    EXPECT_GT(figureOf(permuted), good + 0.05);
    for (size_t const coefficient : {25, 26, 27, 30, 35, 50, 51, 52, 55, 60}) { // of red and blue
        auto spoilt = list;
        spoilt[2 + coefficient].third = 0;
        EXPECT_GT(figureOf(spoilt), good + 0.02) << coefficient;
    }
}

constexpr uint32_t kKelvin[] = {0, 0, 2900, 4000, 6500}; // by slot

/// The same lens in the light of a slot: its colour shading changes.
Response inLightOf(TestSensor const& sensor, uint32_t slot) {
    return SyntheticLens{Shape::CosineFourth, 2.2, 0.1 * slot - 0.1, 0.05, 0}.response(sensor);
}

using FindTable = int (*)(sf_Handle*, sf_ApgaParams const*);

void addTables(Handle const& handle, TestSensor const& sensor, FindTable findTable) {
    for (uint32_t const slot : {2u, 4u, 3u}) {
        ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, slot))));
        sf_ApgaParams const params = tableParams(slot, kKelvin[slot]);
        ASSERT_EQ(findTable(handle.get(), &params), 0);
    }
}

TEST(Tables, CorrectWhatTheBaseLeavesOrNeedNone) {
    struct Row {
        TestSensor sensor;
        FindTable findTable;
        size_t before; ///< entries of the list before the tables
        size_t each;
    };
    std::vector<uint32_t> const all{0, 2, 3, 4};
    Row const rows[] = {
        {{.bankSlots = all}, sf_FindApga, 102, 101},
        {{.bankSlots = all, .tablesHaveOrigins = true}, sf_FindAutoPga, 2, 103}, // the base must not stay
        {{.bankSlots = {2, 3, 4}, .tablesHaveTemperatures = false}, sf_FindAutoPga, 2, 100},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.each);
        Handle const handle = open(row.sensor);
        ASSERT_TRUE(setImage(handle, row.sensor, expose(row.sensor, inLightOf(row.sensor, 3))));
        ASSERT_TRUE(row.sensor.bankSlots != all || findSolution(handle) == 0);
        addTables(handle, row.sensor, row.findTable);
        auto const list = registers(handle);
        ASSERT_EQ(list.size(), row.before + 3 * row.each);
        for (uint32_t const slot : {2u, 3u, 4u}) {
            SCOPED_TRACE(slot);
            // The origin comes before the coefficients, or the sensor would show a table around the wrong
            // place.
            auto const entry = [&](size_t place) {
                sf_RegEntry const& told = list[row.before + (slot - 2) * row.each + place];
                return std::pair(told.second, told.third);
            };
            if (row.sensor.tablesHaveOrigins) {
                EXPECT_EQ(entry(0), std::pair(originColumnAddress(slot), 320U));
                EXPECT_EQ(entry(1), std::pair(originRowAddress(slot), 180U));
            }
            if (row.sensor.tablesHaveTemperatures) {
                EXPECT_EQ(entry(row.each - 1), std::pair(temperatureAddress(slot), kKelvin[slot]));
            }
            auto const banks =
                row.findTable == sf_FindApga ? std::vector<uint32_t>{0, slot} : std::vector<uint32_t>{slot};
            Response const gains = gainsOf(row.sensor, list, banks);
            expectFlat(row.sensor, product(inLightOf(row.sensor, slot), gains), 0.01, 0.01);
        }
    }
}

TEST(Tables, NoSlotLeavesTheSolutionAsItIsAndAFailureNoHalfOne) {
    WarningLog const log;
    TestSensor const sensor;
    Handle const handle = open(sensor);
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, 3))));
    sf_ApgaParams const params = tableParams(2, 2900), noSlot = tableParams(0, 4000);
    EXPECT_EQ(sf_FindApga(handle.get(), &params), -1);
    EXPECT_TRUE(log.has("no base solution"));
    ASSERT_EQ(findSolution(handle), 0);
    EXPECT_EQ(sf_FindApga(handle.get(), &noSlot), 0);
    EXPECT_EQ(registers(handle).size(), 102u);
    EXPECT_EQ(sf_FindApga(handle.get(), &params), -1);
    EXPECT_TRUE(log.has("no table for illuminant slot 2"));
    EXPECT_EQ(sf_DumpRegList(handle.get()), nullptr);
}

TEST(PresetFile, TellsItsLightsInOneFormatAndIsNotClaimedWhenNothingWasWritten) {
    QTemporaryDir const folder;
    QByteArray const path = folder.filePath("lens.ini").toLocal8Bit();
    TestSensor const sensor{.bankSlots = {0, 2, 3, 4}};
    Handle const handle = open(sensor);
    EXPECT_NE(sf_DumpRegFile(handle.get(), path.constData(), 0, 0, 0), 0) << "unsolved";
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, inLightOf(sensor, 3))));
    ASSERT_EQ(findSolution(handle, 95), 0);
    addTables(handle, sensor, sf_FindApga);
    EXPECT_NE(sf_DumpRegFile(handle.get(), (path + "/none/lens.ini").constData(), 0, 0, 0), 0);
    for (uint32_t const format : {0u, 2u}) {
        ASSERT_EQ(sf_DumpRegFile(handle.get(), path.constData(), format, 0, 0), 0);
        QFile file(folder.filePath("lens.ini"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QString const text = file.readAll();
        EXPECT_EQ(text.count("\nREG = 0x"), registers(handle).size());
        EXPECT_TRUE(text.startsWith("[Lens Correction]\n; sensor kind 50, variant 1\n; corners at 95 % of"));
        EXPECT_EQ(text.contains("; illuminant slot 2, 2900 K\n"), format == 2);
    }
}
} // namespace
