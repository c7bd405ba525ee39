#include "tests/camera/calibrated_camera.h"

#include "hoststate/uniformity.h"
#include "simulator/host/colour_pipeline.h"
#include "simulator/host/linear_picture.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using simulator::SimulatedCamera;

namespace {

constexpr uint32_t kFalloffPercent = 95;

// Means over the middle tenth of both sides, as shares of the range.
struct MiddleColour {
    double red = 0;
    double green = 0;
    double blue = 0;
};

MiddleColour middleOf(SimulatedCamera const& camera, simulator::Frame const& frame) {
    MiddleColour sum;
    double count = 0;
    size_t const columns = frame.width / 10;
    uint32_t const rows = uint32_t(frame.height) / 10;
    auto const add = [&](uint32_t y, pictara::ColourRow const& row) {
        if (y < uint32_t(frame.height) / 2 - rows / 2 || y >= uint32_t(frame.height) / 2 + rows / 2)
            return;
        for (size_t x = (frame.width - columns) / 2; x < (frame.width + columns) / 2; ++x, ++count) {
            sum.red += double(row.red[x]);
            sum.green += double(row.green[x]);
            sum.blue += double(row.blue[x]);
        }
    };
    pictara::forEachLinearRow(frame, camera.description(), {}, add);
    return {sum.red / count, sum.green / count, sum.blue / count};
}

struct HandleDestroyer {
    void operator()(sf_Handle* handle) const { sf_Destroy(handle); }
};

// One calibration by the library.
class Solving {
public:
    explicit Solving(SimulatedCamera& camera)
        : m_camera(camera),
          m_handle(sf_Create(camera.description().sensorKind, camera.description().variant, -1)) {
        EXPECT_TRUE(m_handle);
    }

    void setImage(double kelvin, uint32_t bits) {
        lightAndExpose(m_camera, kelvin);
        simulator::Frame const frame = m_camera.grab();
        simulator::CameraDescription const& camera = m_camera.description();
        int const accepted =
            sf_SetInputImage2(m_handle.get(), frame.pixels.constData(), camera.width, camera.height, bits,
                              camera.bayerPhase, camera.orientation, 0, -1, -1);
        EXPECT_NE(accepted, 0) << kelvin;
    }

    void findBase() {
        sf_SolutionParams params{};
        params.size = sizeof params;
        params.falloffPercent = kFalloffPercent;
        EXPECT_EQ(sf_FindSolution(m_handle.get(), &params), 0);
    }

    void findTable(Lamp const& lamp, bool isAutomatic) {
        sf_ApgaParams params{};
        params.size = sizeof params;
        params.falloffPercent = kFalloffPercent;
        params.colourTemperature = uint32_t(lamp.kelvin);
        params.illuminantSlot = lamp.slot;
        EXPECT_EQ((isAutomatic ? sf_FindAutoPga : sf_FindApga)(m_handle.get(), &params), 0) << lamp.kelvin;
    }

    std::vector<sf_RegEntry> list() {
        sf_RegList const* const list = sf_DumpRegList(m_handle.get());
        return list ? std::vector(list->entries, list->entries + list->count) : std::vector<sf_RegEntry>();
    }

private:
    SimulatedCamera& m_camera;
    std::unique_ptr<sf_Handle, HandleDestroyer> m_handle;
};

} // namespace

Camera openProfile(char const* profile) {
    QString error;
    Camera camera = SimulatedCamera::open(QString::fromLatin1(profile), &error);
    EXPECT_TRUE(camera) << qPrintable(error);
    return camera;
}

void lightAndExpose(SimulatedCamera& camera, double kelvin) {
    simulator::Light light;
    light.colourTemperature = kelvin;
    camera.setLight(light);
    switchCorrection(camera, false);
    MiddleColour const colour = middleOf(camera, camera.grab());
    double const brightest = std::max({colour.red, colour.green, colour.blue});
    uint32_t const exposure = readRegister(camera, "COARSE_INTEGRATION_TIME");
    writeRegister(camera, "COARSE_INTEGRATION_TIME", uint32_t(std::lround(exposure * 0.5 / brightest)));
}

void switchCorrection(SimulatedCamera const& camera, bool on) {
    struct Switch {
        char const* reg;
        char const* bitfield;
    };
    for (Switch const& row : {Switch{"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"},
                              {"POLY_SC_ENABLE", "ENABLE"},
                              {"COLOR_PIPELINE_CONTROL", "PGA_ENABLE"}})
        if (vy_ExistsBitfield(camera.handle(), row.reg, row.bitfield))
            return writeRegister(camera, row.reg, on ? 1 : 0, row.bitfield);
    ADD_FAILURE() << "the sensor has no switch";
}

std::vector<sf_RegEntry> solveThreeIlluminants(SimulatedCamera& camera, bool isAutomatic) {
    Solving solving(camera);
    if (!isAutomatic) {
        solving.setImage(kFluorescent.kelvin, 12);
        solving.findBase();
    }
    for (Lamp const& lamp : {kIncandescent, kDaylight, kFluorescent}) {
        solving.setImage(lamp.kelvin, isAutomatic ? 8 : 12);
        solving.findTable(lamp, isAutomatic);
    }
    return solving.list();
}

void load(SimulatedCamera const& camera, std::vector<sf_RegEntry> const& list) {
    for (sf_RegEntry const& entry : list) {
        vy_RegisterDescription const* const reg =
            vy_FindRegisterAddr(camera.handle(), entry.second, 0, entry.first);
        ASSERT_TRUE(reg) << std::hex << entry.second;
        EXPECT_EQ(vy_WriteSensorReg(camera.handle(), reg, entry.third), 0);
    }
}

double colourDeviation(SimulatedCamera& camera) {
    simulator::Frame const frame = camera.grab();
    MiddleColour const colour = middleOf(camera, frame);
    pictara::ColourSettings settings;
    settings.redGain = colour.green / colour.red;
    settings.blueGain = colour.green / colour.blue;
    settings.colourCorrection = true;
    settings.displayExponent = 0.45;
    settings.blackLift = 0.005;
    QImage picture;
    pictara::ColourPipeline(camera.description()).render(frame, settings, picture);
    auto const uniformity = measureUniformity({.data = picture.constBits(),
                                               .type = ImageType::Rgb32,
                                               .width = picture.width(),
                                               .height = picture.height(),
                                               .pitch = picture.bytesPerLine()},
                                              0);
    EXPECT_TRUE(uniformity);
    return uniformity ? uniformity->value : -1;
}

double colourDeviation(SimulatedCamera& camera, double kelvin, bool corrected) {
    lightAndExpose(camera, kelvin);
    switchCorrection(camera, corrected);
    return colourDeviation(camera);
}
