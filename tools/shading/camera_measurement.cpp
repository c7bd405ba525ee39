#include "tools/shading/camera_measurement.h"

#include "simulator/files/interruption.h"
#include "simulator/host/session/exposure_loop.h"
#include "simulator/host/session/sensor_registers.h"
#include "tools/shading/command_line.h"
#include "tools/shading/compare.h"
#include "tools/shading/picture_means.h"

#include <QFileInfo>
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

// The blocks of several frames, with the mean of their means.
BlockReport meanOfFrames(SimulatedCamera& camera) {
    CameraDescription const& told = camera.description();
    BlockReport sum = measureBlocks(camera.grab(), told, {});
    double const cellSize = double(told.width) * told.height / double(std::max<size_t>(sum.means.size(), 1));
    int const frames = int(std::clamp(std::ceil(kSamples / cellSize), kFewestFrames, kMostFrames));
    for (int i = 1; i < frames && !files::isInterrupted(); ++i) {
        Cells const cells = measureBlocks(camera.grab(), told, {}).means;
        for (size_t k = 0; k < 3 * cells.size(); ++k)
            sum.means[k / 3][k % 3] += cells[k / 3][k % 3];
    }
    for (pictara::Colour& cell : sum.means)
        for (double& channel : cell)
            channel /= frames;
    return sum;
}

QString faultOf(BlockReport const& blocks) {
    double darkest = 1, brightest = 0;
    for (pictara::Colour const& cell : blocks.means) {
        darkest = std::min(darkest, *std::min_element(cell.begin(), cell.end()));
        brightest = std::max(brightest, *std::max_element(cell.begin(), cell.end()));
    }
    return blocks.columns < 2 || blocks.rows < 2 ? QStringLiteral("it is too small")
           : darkest < kLeastLight               ? QStringLiteral("it is too dark")
           : brightest > kClipped                ? QStringLiteral("it is clipped")
                                                 : QString();
}
} // namespace

void expose(SimulatedCamera& camera) {
    pictara::SensorRegisters registers(camera.handle(), [] {});
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
    if (camera.isCorrecting()) {
        *error = QStringLiteral("The sensor's own shading correction is on.");
        return std::nullopt;
    }
    CameraDescription const& told = camera.description();
    MeasuredShading table{.name = told.profile, .illuminants = {}};
    for (double const kelvin : lights) {
        simulator::Light light = camera.light();
        light.colourTemperature = kelvin;
        camera.setLight(light);
        expose(camera);
        BlockReport const measured = meanOfFrames(camera);
        if (files::isInterrupted())
            return std::nullopt;
        if (QString const fault = faultOf(measured); !fault.isEmpty()) {
            *error = QStringLiteral("%1: the picture at %2 K is of no use: %3")
                         .arg(told.profile)
                         .arg(kelvin)
                         .arg(fault);
            return std::nullopt;
        }
        table.columns = uint32_t(measured.columns);
        table.rows = uint32_t(measured.rows);
        table.illuminants.push_back(
            *gainsOf(asOnTheArray(measured.means, measured.columns, told.orientation), kelvin));
    }
    return table;
}

std::optional<pictara::Certificate> measureCamera(CameraRequest const& request, int* exitCode,
                                                  QString* error) {
    auto const camera =
        request.table.isReplaceable(error) ? SimulatedCamera::open(request.profile, error) : nullptr;
    if (!camera ||
        (!request.shadingFile.isEmpty() && !camera->useMeasuredShading(request.shadingFile, error)))
        return std::nullopt;
    camera->setLight({.level = request.level});
    std::vector<double> lights(kStandardLights.begin(), kStandardLights.end());
    if (request.kelvin)
        lights = {*request.kelvin};
    std::optional<MeasuredShading> const table = measureShading(*camera, lights, error);
    *exitCode = table ? kDone : kNothingFound;
    if (!table || !request.table.write(*table, error))
        return std::nullopt;
    return tablesTold({{request.table.name, *table}});
}
} // namespace shading
