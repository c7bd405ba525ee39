#include "simulator/host/report/picture_detail.h"

#include <algorithm>

namespace pictara {
namespace {
// Both odd, so that there is a cell in the middle.
constexpr int kMapCells = 65;
constexpr int kCoarseCells = 11;

template <typename AnyFrame>
LightMaps mapsOf(AnyFrame const& frame, simulator::CameraDescription const& camera,
                 ColourSettings const& settings) {
    ColourSettings const balanceAlone{.redGain = settings.redGain, .blueGain = settings.blueGain};
    auto const skipped = int(camera.unusableRows);
    return {lightGrid(linearRows(frame, camera, balanceAlone), kMapCells, kMapCells, skipped),
            lightGrid(linearRows(frame, camera, settings), kMapCells, kMapCells, skipped)};
}

// Nothing is above a reference that is no light.
double percentAbove(double value, double reference) {
    return reference > 0 ? 100 * (value / reference - 1) : 0;
}
} // namespace

PictureDetail measureDetail(simulator::Frame const& frame, simulator::IdealFrame const& ideal,
                            simulator::CameraDescription const& camera, ColourSettings const& settings,
                            QImage const& shown) {
    auto const skipped = int(camera.unusableRows);
    RowSource const idealLight = linearRows(ideal, camera, settings);
    return {
        .maps = mapsOf(frame, camera, settings),
        .trueMaps = mapsOf(ideal, camera, settings),
        .coarseLight = lightGrid(linearRows(frame, camera, settings), kCoarseCells, kCoarseCells, skipped),
        .coarseColour = rateDisplay(shownRows(shown), kCoarseCells, kCoarseCells, skipped),
        .shown = rateDisplay(shownRows(shown), skipped),
        .trueShown = rateDisplay(shownRows(idealLight, settings), skipped),
        .trueBlocks = measureBlocks(idealLight),
    };
}

std::vector<double> luminanceResidual(LightGrid const& light) {
    std::vector<double> residual;
    if (light.isEmpty())
        return residual;
    size_t const middle = size_t(light.rows / 2) * size_t(light.columns) + size_t(light.columns / 2);
    double const reference = luminance(light.cells[middle]);
    std::transform(light.cells.begin(), light.cells.end(), std::back_inserter(residual),
                   [&](Colour const& cell) { return percentAbove(luminance(cell), reference); });
    return residual;
}

std::vector<double> ratioResidual(LightGrid const& light, size_t channel) {
    std::vector<double> ratios;
    double mean = 0;
    for (Colour const& cell : light.cells) {
        ratios.push_back(cell[1] > 0 ? cell[channel] / cell[1] : 0);
        mean += ratios.back() / double(light.cells.size());
    }
    for (double& ratio : ratios)
        ratio = percentAbove(ratio, mean);
    return ratios;
}

std::vector<double> diagonal(std::vector<double> const& values, int columns, int rows) {
    std::vector<double> line;
    int const steps = std::max(columns, rows);
    for (int i = 0; i < steps && !values.empty(); ++i) {
        int const last = std::max(steps - 1, 1);
        int const column = i * (columns - 1) / last, row = i * (rows - 1) / last;
        line.push_back(values[size_t(row) * size_t(columns) + size_t(column)]);
    }
    return line;
}
} // namespace pictara
