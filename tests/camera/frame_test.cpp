#include "simulator/files/sensor_layout.h"
#include "tests/support/camera_under_test.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

using namespace simulator;

namespace {
constexpr uint32_t kHalf = 0x3800, kOneAndHalf = 0x3E00; // as binary16

TEST(Correction, EveryInstalledProfileDeliversWhatItDescribesTimesThePolynomialInItsRegisters) {
    QString error;
    for (QString const& name : SimulatedCamera::profileNames()) {
        SCOPED_TRACE(qPrintable(name));
        Camera const camera = openProfile(name);
        CameraDescription const& told = camera->description();
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
        // Green's constant term, found by its address in the layout block as a host does it.
        auto const layout = parseSensorLayout(
            static_cast<char const*>(vy_SensorInfo(camera->handle())->sensorData), {}, &error);
        ASSERT_TRUE(layout) << qPrintable(error);
        auto const& [id, address] = layout->banks.front().planes[Plane::GreenRed].first;
        auto const* const green = vy_FindRegisterAddr(camera->handle(), address, 0, id);
        EXPECT_EQ(vy_WriteSensorReg(camera->handle(), green, kOneAndHalf), 0);
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

// Of the registers of the first coefficients, in whose name %1 stands for the table's.
void setTable(Camera const& camera, char const* registers, size_t table, size_t gain) {
    constexpr char const* kTableNames[] = {"A", "CWF", "D65"};
    writeRegister(*camera, QByteArray(registers).replace("%1", kTableNames[table]), kGainPatterns[gain]);
}

void expectGain(Camera const& camera, double kelvin, double gain, double tolerance = 0.02) {
    camera->setLight({.colourTemperature = kelvin});
    EXPECT_NEAR(correctionAt(camera), gain, tolerance) << kelvin;
}

TEST(TableBlend, MixesTheNeighboursInReciprocalKelvinInWhateverOrderTheyStand) {
    Camera const camera = openProfile("adaptive-72");
    auto const setTables = [&](std::array<size_t, 3> gains, std::array<uint32_t, 3> kelvins) {
        for (size_t i = 0; i < 3; ++i) {
            setTable(camera, "PGATABLE%1_DATA_000", i, gains[i]);
            writeRegister(*camera, QByteArray("CAM_PGA_$_CONFIG_COLOUR_TEMP").replace('$', "LMR"[i]),
                          kelvins[i]);
        }
    };
    auto const between = [](double kelvin, size_t lower, double lowerKelvin, double upperKelvin) {
        double const share = (1 / kelvin - 1 / lowerKelvin) / (1 / upperKelvin - 1 / lowerKelvin);
        return kGains[lower] + share * (kGains[lower + 1] - kGains[lower]);
    };
    for (bool const reversed : {false, true}) {
        SCOPED_TRACE(reversed);
        reversed ? setTables({2, 1, 0}, {6500, 4000, 2800}) : setTables({0, 1, 2}, {2800, 4000, 6500});
        expectGain(camera, 2200, kGains[0]);
        expectGain(camera, 3300, between(3300, 0, 2800, 4000));
        expectGain(camera, 4900, between(4900, 1, 4000, 6500));
        expectGain(camera, 9000, kGains[2]);
    }
    writeRegister(*camera, "P_GR_P0Q0", kOneAndHalf); // the base is a factor
    expectGain(camera, 4000, 1.5 * kGains[1], 0.04);
    setTables({0, 0, 0}, {0, 0, 0}); // such temperatures tell nothing
    expectGain(camera, 4000, 1.5 * kGains[0], 0.04);
}

TEST(HeldTable, IsShownUnderEveryLampAndNoneAtReset) {
    struct {
        char const* profile;
        char const* tables;
        char const* reg; ///< by which the sensor stops to mix
        char const* bitfield;
        uint32_t value;
        size_t warm, cold; ///< tables that are shown under these lamps
    } const rows[] = {
        {"three-tables-68", "PGATABLE%1_DATA_000", "PGASETUP_MODE", "", 0, 1, 1},
        {"zone-tables-68", "PGATABLE%1_DATA_000", "PGAOUTPUT_CURZONE", "", 1, 0, 0},
        {"zone-tables-68", "PGATABLE%1_DATA_000", "PGAOUTPUT_CURZONE", "", 4, 0, 2},
        {"automatic-76", "PGA_TABLE_%1_DATA_0", "PGA_CURRENT_ZONE", "", 2, 1, 1},
        {"automatic-76", "PGA_TABLE_%1_DATA_0", "CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 0, 1, 1},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(testing::Message() << row.profile << ' ' << row.reg << ' ' << row.value);
        Camera const camera = openProfile(row.profile);
        for (size_t i = 0; i < 3; ++i)
            setTable(camera, row.tables, i, i);
        expectGain(camera, 2400, kGains[0]);
        expectGain(camera, 8000, kGains[2]);
        writeRegister(*camera, row.reg, row.value, row.bitfield);
        expectGain(camera, 2400, kGains[row.warm]);
        expectGain(camera, 8000, kGains[row.cold]);
    }
}

TEST(IlluminantEstimate, FollowsTheLampWhateverTheExposureAndTheCorrection) {
    Camera const camera = openProfile("adaptive-72-flipped");
    auto const seen = [&](double kelvin, double level = 1) {
        camera->setLight({.colourTemperature = kelvin, .level = level});
        (void)camera->grab();
        return double(readRegister(*camera, "AWB_COLOUR_TEMPERATURE"));
    };
    for (double const level : {0.02, 1.0, 3.0})
        EXPECT_NEAR(seen(2300, level) / 2300, 1, 0.02) << level;
    double const plain = seen(9000);
    EXPECT_NEAR(plain / 9000, 1, 0.02);
    EXPECT_EQ(seen(7000, 1000), plain) << "a picture that tells nothing";
    // A correction that colours the middle must not lead the sensor to another table.
    writeRegister(*camera, "P_RD_P0Q0", 0x4000);
    switchCorrection(*camera, true);
    EXPECT_NEAR(seen(9000) / plain, 1, 0.005);
}

// Photon noise: the variance in electrons is the signal in electrons plus that of the amplifier.
TEST(Frame, VarianceIsThatOfPhotonsAndAmplifierAndTheSignalIsLinear) {
    Camera const camera = openChanged(R"(, "readOut": {"electronsPerCount": 2, "readNoise": 8})");
    for (uint32_t const exposure : {100U, 1000U}) {
        writeRegister(*camera, "COARSE_INTEGRATION_TIME", exposure);
        Frame const one = camera->grab();
        Frame const other = camera->grab();
        double squares = 0, sum = 0, count = 0;
        for (uint32_t y = 500; y < 560; y += 2)
            for (uint32_t x = 901; x < 1000; x += 2, ++count) {
                squares += std::pow(sampleAt(one, x, y) - sampleAt(other, x, y), 2) / 2;
                sum += sampleAt(one, x, y) - camera->description().blackLevel;
            }
        EXPECT_NEAR(sum / count / (0.2 * 3935 * exposure / 400), 1, 0.05)
            << "of full scale at the reset value";
        double const expected = sum / count / 2 + 8.0 * 8.0 / 4; // counts
        EXPECT_NEAR(squares / count / expected, 1, 0.1) << exposure;
    }
}

TEST(Frame, UnusableRowsHoldNoPicture) {
    Camera const camera = openProfile("unusable-rows-33");
    camera->setLight({.level = 0});
    QByteArray const bytes = camera->grab().pixels;
    int const margin = int(2 * camera->description().width * 2);
    EXPECT_GT(bytes.left(margin).count('\x0F'), 0) << "anything but black, of which no byte is so";
    EXPECT_EQ(bytes.mid(margin).count('\x0F'), 0);
}
} // namespace
