#include "simulator/host/shading/shading_measurement.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/block_means.h"
#include "simulator/host/session/exposure_loop.h"
#include "simulator/host/session/sensor_registers.h"
#include "simulator/host/shading/recorded_picture.h"

#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr int kColumns = 32;
constexpr double kSamples = 8000; // of a cell at one light, against noise
constexpr double kFewestFrames = 8, kMostFrames = 64;
constexpr int kExposureSteps = 20;    // more than any light needs
constexpr double kTarget = 0.7;       // of full scale, for the brightest colour
constexpr double kLeastLight = 0.005; // of full scale, for the darkest cell
constexpr double kClipped = 0.99;
constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";

using simulator::MeasuredShading;

// A table tells the lens as it lies before the pixel array, however that is read out.
LightGrid asOnTheArray(LightGrid grid, uint32_t orientation) {
    auto const columns = std::ptrdiff_t(grid.columns);
    if (orientation & 1)
        for (auto row = grid.cells.begin(); row != grid.cells.end(); row += columns)
            std::reverse(row, row + columns);
    if (orientation & 2)
        for (auto upper = grid.cells.begin(), lower = grid.cells.end() - columns; upper < lower;
             upper += columns, lower -= columns)
            std::swap_ranges(upper, upper + columns, lower);
    return grid;
}

// Cells of the picture without the rows that hold none; one more is left out, into which they were mixed when
// the colours were completed.
LightGrid cellsOf(simulator::Frame const& frame, simulator::CameraDescription const& camera) {
    int const rows = std::max(2, int(std::lround(double(kColumns) * frame.height / frame.width)));
    int const skipped = camera.unusableRows > 0 ? int(camera.unusableRows) + 1 : 0;
    return asOnTheArray(lightGrid(linearRows(frame, camera, {}), kColumns, rows, skipped),
                        camera.orientation);
}

void add(LightGrid const& cells, LightGrid& sum) {
    if (sum.isEmpty()) {
        sum = cells;
        return;
    }
    for (size_t i = 0; i < cells.cells.size(); ++i)
        for (size_t colour = 0; colour < 3; ++colour)
            sum.cells[i][colour] += cells.cells[i][colour];
}

// What each plane needs to be as bright as in its brightest cell.
MeasuredShading::Illuminant gainsOf(LightGrid const& cells, double kelvin) {
    MeasuredShading::Illuminant illuminant{.temperature = kelvin, .gains = {}};
    for (size_t colour = 0; colour < 3; ++colour) {
        double brightest = 0;
        for (Colour const& cell : cells.cells)
            brightest = std::max(brightest, cell[colour]);
        for (Colour const& cell : cells.cells)
            illuminant.gains[colour].push_back(brightest / cell[colour]);
    }
    return illuminant;
}

bool isUsable(LightGrid const& cells, QString* error) {
    if (cells.columns < 2 || cells.rows < 2) {
        *error = QStringLiteral("it is too small");
        return false;
    }
    for (Colour const& cell : cells.cells) {
        auto const [darkest, brightest] = std::minmax_element(cell.begin(), cell.end());
        if (*darkest >= kLeastLight && *brightest <= kClipped)
            continue;
        *error = *darkest < kLeastLight ? QStringLiteral("it is too dark") : QStringLiteral("it is clipped");
        return false;
    }
    return true;
}

MeasuredShading tableOf(QString const& name, LightGrid const& cells) {
    return {
        .name = name, .columns = uint32_t(cells.columns), .rows = uint32_t(cells.rows), .illuminants = {}};
}

// Until nothing is too bright and the brightest colour near its target, anywhere in the picture.
void expose(simulator::SimulatedCamera& camera) {
    SensorRegisters registers(camera.handle(), [] {});
    for (int step = 0; step < kExposureSteps; ++step) {
        uint32_t const present = registers.read(kExposureRegister, "");
        uint32_t const next =
            nextExposure(present, measureCentre(camera.grab(), camera.description(), 100), kTarget);
        if (next == present || !registers.write(kExposureRegister, "", next))
            return;
    }
}

LightGrid meanOfFrames(simulator::SimulatedCamera& camera) {
    simulator::CameraDescription const& told = camera.description();
    double const side = double(told.width) / kColumns;
    int const frames = int(std::clamp(std::ceil(kSamples / (side * side)), kFewestFrames, kMostFrames));
    LightGrid sum;
    for (int i = 0; i < frames && !files::isInterrupted(); ++i)
        add(cellsOf(camera.grab(), told), sum);
    for (Colour& cell : sum.cells)
        for (double& channel : cell)
            channel /= frames;
    return sum;
}
} // namespace

std::optional<MeasuredShading> measureShading(simulator::SimulatedCamera& camera,
                                              std::vector<double> const& lights,
                                              std::function<void(double kelvin)> const& onLight,
                                              QString* error) {
    if (camera.isCorrecting()) {
        *error = QStringLiteral("The sensor's own shading correction is on.");
        return std::nullopt;
    }
    std::optional<MeasuredShading> table;
    for (double const kelvin : lights) {
        simulator::Light light = camera.light();
        light.colourTemperature = kelvin;
        onLight(kelvin);
        camera.setLight(light);
        expose(camera);
        LightGrid const cells = meanOfFrames(camera);
        if (files::isInterrupted()) {
            *error = QStringLiteral("Interrupted.");
            return std::nullopt;
        }
        if (!isUsable(cells, error)) {
            *error = QStringLiteral("The picture at %1 K is of no use: %2.").arg(kelvin).arg(*error);
            return std::nullopt;
        }
        if (!table)
            table = tableOf(camera.description().profile, cells);
        table->illuminants.push_back(gainsOf(cells, kelvin));
    }
    return table;
}

std::optional<MeasuredShading> measureRecordedShading(QString const& file,
                                                      simulator::CameraDescription const& camera,
                                                      double kelvin, QString* error) {
    std::optional<simulator::Frame> const frame = readRecordedPicture(file, camera, error);
    if (!frame)
        return std::nullopt;
    LightGrid const cells = cellsOf(*frame, camera);
    if (!isUsable(cells, error)) {
        *error = QStringLiteral("The picture %1 is of no use: %2.").arg(file, *error);
        return std::nullopt;
    }
    MeasuredShading table = tableOf(file, cells);
    table.illuminants.push_back(gainsOf(cells, kelvin));
    return table;
}
} // namespace pictara
