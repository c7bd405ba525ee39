#include "simulator/files/sensor_layout.h"
#include "tests/support/camera_under_test.h"

#include <array>
#include <gtest/gtest.h>

using namespace simulator;

namespace {
constexpr uint32_t kHalf = 0x3800; // as binary16
constexpr uint32_t kOneAndHalf = 0x3E00;

// The register of green's constant term, found by its address in the layout block as a host does it.
vy_RegisterDescription const* greenRegister(Camera const& camera) {
    QString error;
    auto const layout = parseSensorLayout(
        static_cast<char const*>(vy_SensorInfo(camera->handle())->sensorData), QString(), &error);
    EXPECT_TRUE(layout) << qPrintable(error);
    RegisterPlace const place = layout->banks.front().planes[Plane::GreenRed].first;
    return vy_FindRegisterAddr(camera->handle(), place.address, 0, place.id);
}

TEST(Correction, EveryInstalledProfileDeliversWhatItDescribesTimesThePolynomialInItsRegisters) {
    for (QString const& name : SimulatedCamera::profileNames()) {
        SCOPED_TRACE(qPrintable(name));
        Camera const camera = openProfile(name);
        CameraDescription const& told = camera->description();
        EXPECT_FALSE(told.summary.isEmpty());
        Frame const frame = camera->grab();
        EXPECT_EQ(frame.type, told.rawType);
        EXPECT_EQ(frame.pitch, told.width * (frame.type == FrameType::Raw8 ? 1 : 2));
        EXPECT_EQ(uint32_t(frame.pixels.size()), frame.pitch * told.height);
        EXPECT_EQ(vy_SensorInfo(camera->handle())->sensorKind, told.sensorKind);
        if (frame.type == FrameType::Ycbcr)
            continue;
        // Room above for the exposure loop, and light enough to begin with.
        EXPECT_NEAR(greenMean(*camera, frame, {45, 45, 55, 55}) / (told.whiteLevel - told.blackLevel), 0.2,
                    0.02);
        EXPECT_NEAR(correctionAt(camera), 1, 0.01) << "the reset registers change nothing";
        EXPECT_EQ(vy_WriteSensorReg(camera->handle(), greenRegister(camera), kOneAndHalf), 0);
        EXPECT_NEAR(correctionAt(camera), 1.5, 0.015);
        double const red = redMean(*camera, camera->grab());
        switchCorrection(*camera, false);
        EXPECT_NEAR(redMean(*camera, camera->grab()) / red, 1, 0.01) << "one plane is another's";
    }
}

// The terms u and v are the array's, whatever the direction of the read-out; the origin moves them.
TEST(Correction, TermsFollowTheArrayAndTheOrigin) {
    for (uint32_t orientation = 0; orientation < 4; ++orientation) {
        SCOPED_TRACE(orientation);
        Camera const camera = openQuiet(2, orientation);
        writeRegister(*camera, "P_GR_P1Q0", kHalf);
        // In the middle of a strip two per cent of the picture wide |u| is 0.98.
        double const right = (orientation & 1) != 0 ? -0.49 : 0.49;
        EXPECT_NEAR(correctionAt(camera, {98, 48, 100, 52}), 1 + right, 0.02);
        EXPECT_NEAR(correctionAt(camera, {0, 48, 2, 52}), 1 - right, 0.02);
        writeRegister(*camera, "POLY_ORIGIN_C", 160 + 32); // a fifth of the half-width
        EXPECT_NEAR(correctionAt(camera), 1 - 0.1, 0.02);
    }
}

TEST(Correction, NegativeAndHugeGainsStayWithinTheSamples) {
    Camera const camera = openQuiet();
    double const black = camera->description().blackLevel, white = camera->description().whiteLevel;
    switchCorrection(*camera, true);
    // The pattern of minus infinity, the largest value, the pattern of no number.
    for (auto const& [gain, sample] : {std::pair{0xFC00U, black}, {0x7BFFU, white}, {0x7E00U, black}}) {
        writeRegister(*camera, "P_GR_P0Q0", gain);
        EXPECT_EQ(sampleAt(camera->grab(), 161, 120), sample) << gain;
    }
}

// Tables of even gains, which a picture tells apart: binary16 patterns and what they stand for.
constexpr uint32_t kGainPatterns[] = {0x3D00, 0x3E00, 0x4000};
constexpr std::array<double, 3> kGains = {1.25, 1.5, 2.0};
constexpr double kTolerance = 0.02;

void light(Camera const& camera, double kelvin, double level = 1) {
    camera->setLight({.colourTemperature = kelvin, .level = level});
}

constexpr char const* kTables[] = {"PGATABLEA_DATA_000", "PGATABLECWF_DATA_000", "PGATABLED65_DATA_000"};
constexpr char const* kTemperatures[] = {"CAM_PGA_L_CONFIG_COLOUR_TEMP", "CAM_PGA_M_CONFIG_COLOUR_TEMP",
                                         "CAM_PGA_R_CONFIG_COLOUR_TEMP"};

// Gains of the given numbers in the order of the temperatures' registers.
void setTables(Camera const& camera, std::array<uint32_t, 3> const& temperatures,
               std::array<size_t, 3> const& gains) {
    for (size_t i = 0; i < 3; ++i) {
        writeRegister(*camera, kTables[i], kGainPatterns[gains[i]]);
        writeRegister(*camera, kTemperatures[i], temperatures[i]);
    }
}

double between(double kelvin, size_t lower, double lowerKelvin, double upperKelvin) {
    double const share = (1 / kelvin - 1 / lowerKelvin) / (1 / upperKelvin - 1 / lowerKelvin);
    return kGains[lower] + share * (kGains[lower + 1] - kGains[lower]);
}

TEST(TableBlend, MixesTheNeighboursInReciprocalKelvinInWhateverOrderTheyStand) {
    Camera const camera = openProfile("adaptive-72");
    auto const gainUnder = [&](double kelvin) {
        light(camera, kelvin);
        return correctionAt(camera);
    };
    for (bool const reversed : {false, true}) {
        SCOPED_TRACE(reversed);
        reversed ? setTables(camera, {6500, 4000, 2800}, {2, 1, 0})
                 : setTables(camera, {2800, 4000, 6500}, {0, 1, 2});
        EXPECT_NEAR(gainUnder(2200), kGains[0], kTolerance);
        EXPECT_NEAR(gainUnder(3300), between(3300, 0, 2800, 4000), kTolerance);
        EXPECT_NEAR(gainUnder(4900), between(4900, 1, 4000, 6500), kTolerance);
        EXPECT_NEAR(gainUnder(9000), kGains[2], kTolerance);
    }
    writeRegister(*camera, "P_GR_P0Q0", 0x3E00); // the base, 1.5, is a factor
    EXPECT_NEAR(gainUnder(4000), 1.5 * kGains[1], 2 * kTolerance);
    setTables(camera, {0, 0, 0}, {0, 0, 0}); // temperatures that tell nothing
    EXPECT_NEAR(gainUnder(4000), 1.5 * kGains[0], 2 * kTolerance);
}

// Registers by which a sensor stops to mix, and the table that it then shows.
struct Holding {
    char const* profile;
    char const* tableName; ///< %1 stands for A, CWF, D65
    char const* reg;
    char const* bitfield;
    uint32_t value;
    size_t table; ///< 3: it goes on mixing
};

constexpr size_t kMixing = 3;
constexpr Holding kHoldings[] = {
    {"three-tables-68", "PGATABLE%1_DATA_000", "PGASETUP_MODE", "", 0, 1},
    {"zone-tables-68", "PGATABLE%1_DATA_000", "PGAOUTPUT_CURZONE", "", 1, 0},
    {"zone-tables-68", "PGATABLE%1_DATA_000", "PGAOUTPUT_CURZONE", "", 3, 2},
    {"zone-tables-68", "PGATABLE%1_DATA_000", "PGAOUTPUT_CURZONE", "", 4, kMixing},
    {"automatic-76", "PGA_TABLE_%1_DATA_0", "PGA_CURRENT_ZONE", "", 2, 1},
    {"automatic-76", "PGA_TABLE_%1_DATA_0", "CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 0, 1},
    {"automatic-76", "PGA_TABLE_%1_DATA_0", "CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 1, kMixing},
};

TEST(HeldTable, IsShownUnderEveryLampAndNoneAtReset) {
    for (Holding const& row : kHoldings) {
        SCOPED_TRACE(testing::Message() << row.profile << ' ' << row.reg << ' ' << row.value);
        Camera const camera = openProfile(row.profile);
        constexpr char const* kNames[] = {"A", "CWF", "D65"};
        for (size_t i = 0; i < 3; ++i)
            writeRegister(*camera, QByteArray(row.tableName).replace("%1", kNames[i]).constData(),
                          kGainPatterns[i]);
        auto const expectTables = [&](size_t underWarm, size_t underCold) {
            light(camera, 2400);
            EXPECT_NEAR(correctionAt(camera), kGains[underWarm], kTolerance);
            light(camera, 8000);
            EXPECT_NEAR(correctionAt(camera), kGains[underCold], kTolerance);
        };
        expectTables(0, 2);
        writeRegister(*camera, row.reg, row.value, row.bitfield);
        expectTables(row.table == kMixing ? 0 : row.table, row.table == kMixing ? 2 : row.table);
    }
}

double seen(Camera const& camera) {
    (void)camera->grab();
    return readRegister(*camera, "AWB_COLOUR_TEMPERATURE");
}

TEST(IlluminantEstimate, FollowsTheLampWhateverTheExposureAndTheCorrection) {
    for (char const* const profile : {"zone-tables-68", "adaptive-72-flipped", "automatic-76"}) {
        SCOPED_TRACE(profile);
        Camera const camera = openProfile(profile);
        for (double const kelvin : {2300.0, 4900.0, 9000.0})
            for (double const level : {0.02, 1.0, 3.0}) {
                light(camera, kelvin, level);
                EXPECT_NEAR(seen(camera) / kelvin, 1, 0.02) << kelvin << ' ' << level;
            }
        double const last = seen(camera);
        for (double const level : {0.0, 1000.0}) {
            light(camera, 7000, level);
            EXPECT_EQ(seen(camera), last) << "a picture that tells nothing";
        }
        light(camera, 9000);
        // A correction that colours the middle must not lead the sensor to another table.
        double const plain = seen(camera);
        writeRegister(*camera, "P_RD_P0Q0", 0x4000);
        switchCorrection(*camera, true);
        EXPECT_NEAR(seen(camera) / plain, 1, 0.005);
    }
}
} // namespace
