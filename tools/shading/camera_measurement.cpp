#include "tools/shading/camera_measurement.h"

#include "simulator/files/interruption.h"
#include "simulator/host/session/exposure_loop.h"
#include "simulator/host/session/sensor_registers.h"
#include "tools/shading/picture_means.h"
#include "tools/shading/telling.h"

#include <algorithm>
#include <cmath>

namespace shading {
namespace {
constexpr double kSamples = 8000; // of a cell at one light, against noise
constexpr double kFewestFrames = 8, kMostFrames = 64;
constexpr int kExposureSteps = 20;    // more than any light needs
constexpr double kTarget = 0.7;       // of full scale, for the brightest colour
constexpr double kLeastLight = 0.005; // of full scale, for the darkest cell
constexpr double kClipped = 0.99;
constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";

using namespace pictara;
using simulator::CameraDescription;
using simulator::MeasuredShading;
using simulator::SimulatedCamera;
} // namespace

void expose(SimulatedCamera& camera) {
    SensorRegisters registers(camera.handle(), [] {});
    for (int step = 0; step < kExposureSteps; ++step) {
        uint32_t const present = registers.read(kExposureRegister, "");
        uint32_t const next =
            nextExposure(present, measureCentre(camera.grab(), camera.description(), 100), kTarget);
        if (next == present || !registers.write(kExposureRegister, "", next))
            return;
    }
}

std::optional<MeasuredShading> measureShading(SimulatedCamera& camera, std::vector<double> const& lights,
                                              QString* error) {
    CameraDescription const& told = camera.description();
    MeasuredShading table{.name = told.profile, .illuminants = {}};
    for (double const kelvin : lights) {
        simulator::Light light = camera.light();
        light.colourTemperature = kelvin;
        camera.setLight(light);
        expose(camera);
        BlockReport const blocks = measureBlocks(camera.grab(), told, {});
        Cells cells = cellsOf(blocks, told.orientation);
        double const cellSize = double(told.width) * told.height / double(std::max<size_t>(cells.rows(), 1));
        int const frames = int(std::clamp(std::ceil(kSamples / cellSize), kFewestFrames, kMostFrames));
        for (int i = 1; i < frames && !files::isInterrupted(); ++i)
            cells += cellsOf(measureBlocks(camera.grab(), told, {}), told.orientation);
        cells /= frames;
        if (files::isInterrupted())
            return std::nullopt;
        if (blocks.rows < 2 || cells.minCoeff() < kLeastLight || cells.maxCoeff() > kClipped)
            return fail(told.profile,
                        QStringLiteral("the picture at %1 K is too small, too dark or clipped").arg(kelvin),
                        error);
        table.columns = uint32_t(blocks.columns);
        table.rows = uint32_t(blocks.rows);
        table.illuminants.push_back(*gainsOf(cells, kelvin));
    }
    return table;
}
} // namespace shading
