#include "tools/shading/picture_means.h"

#include "simulator/files/interruption.h"

#include <QRect>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace shading {
namespace {
using simulator::Plane;

// From neighbours of one plane, which differ by noise alone: their mean distance is 2 / sqrt(pi) standard
// deviations, and few hot pixels hardly change it.
double noiseInTheMiddle(Mosaic const& mosaic) {
    constexpr uint32_t kShare = 32; // of a side, to each side of the middle
    uint32_t const left = mosaic.width / 4 * 2 - mosaic.width / kShare * 2 + (~mosaic.bayerPhase & 1);
    uint32_t const top = mosaic.height / 4 * 2 - mosaic.height / kShare * 2 + (mosaic.bayerPhase >> 1);
    double distances = 0, sum = 0, count = 0;
    for (uint32_t y = top; y < mosaic.height - top; y += 2)
        for (uint32_t x = left; x < mosaic.width - left; x += 2) {
            uint16_t const* const sample = &mosaic.samples[size_t(y) * mosaic.width + x];
            distances += std::abs(sample[0] - sample[2]);
            sum += sample[0];
            ++count;
        }
    double const level = sum / count - mosaic.blackLevel[Plane::GreenRed];
    return level > 0 ? distances / count * std::sqrt(std::numbers::pi) / 2 / level : 0;
}

void measureCells(Mosaic const& mosaic, PictureMeans& means) {
    // In counts, for each plane has a black level of its own. Where a colour is completed, green comes from
    // both of its planes in equal parts.
    constexpr double kScale = 65535;
    simulator::CameraDescription camera = mosaic.description();
    camera.blackLevel = 0;
    camera.whiteLevel = kScale;
    pictara::BlockReport report = pictara::measureBlocks(mosaic.frame(), camera, {});
    auto const& of = mosaic.blackLevel;
    double const black[] = {of[Plane::Red], (of[Plane::GreenRed] + of[Plane::GreenBlue]) / 2,
                            of[Plane::Blue]};
    for (pictara::Colour& cell : report.means)
        for (size_t colour = 0; colour < 3; ++colour)
            cell[colour] = (cell[colour] * kScale - black[colour]) / (mosaic.whiteLevel - black[colour]);
    means.columns = report.columns;
    means.rows = report.rows;
    means.cells = asOnTheArray(std::move(report.means), report.columns, mosaic.orientation);
}
} // namespace

Cells asOnTheArray(Cells cells, int columns, uint32_t orientation) {
    if (orientation & 1)
        for (auto row = cells.begin(); row != cells.end(); row += columns)
            std::reverse(row, row + columns);
    if (orientation & 2)
        for (auto upper = cells.begin(), lower = cells.end() - columns; upper < lower;
             upper += columns, lower -= columns)
            std::swap_ranges(upper, upper + columns, lower);
    return cells;
}

std::optional<simulator::MeasuredShading::Illuminant> gainsOf(Cells const& cells, double kelvin) {
    simulator::MeasuredShading::Illuminant illuminant{kelvin, {}};
    for (size_t colour = 0; colour < 3; ++colour) {
        double brightest = 0;
        for (pictara::Colour const& cell : cells)
            brightest = std::max(brightest, cell[colour]);
        for (pictara::Colour const& cell : cells)
            if (cell[colour] > 0)
                illuminant.gains[colour].push_back(brightest / cell[colour]);
            else
                return std::nullopt;
    }
    return illuminant;
}

PictureMeans meansOf(Mosaic const& mosaic) {
    PictureMeans means{.file = mosaic.file,
                       .width = mosaic.width,
                       .height = mosaic.height,
                       .blackLevel = mosaic.blackLevel,
                       .blackSource = mosaic.blackSource,
                       .blocks = {},
                       .inspection = {},
                       .noise = noiseInTheMiddle(mosaic),
                       .cells = {}};
    measureCells(mosaic, means);
    // The black levels are taken off below, for the layout knows but one.
    simulator::SensorLayout const layout{
        .width = mosaic.width, .height = mosaic.height, .sampleBytes = 2, .whiteLevel = mosaic.whiteLevel};
    means.blocks = solver::readRaw(mosaic.samples.data(), layout, mosaic.bayerPhase, 0);
    for (size_t plane = 0; plane < simulator::kPlaneCount; ++plane) {
        double const black = mosaic.blackLevel[plane] / mosaic.whiteLevel;
        Eigen::ArrayXd& mean = means.blocks.planes[plane].mean;
        mean = (mean - black) / (1 - black);
    }
    means.inspection = inspect(means.blocks, layout);
    return means;
}

std::optional<std::vector<PictureMeans>> readMeans(QStringList const& names, Coding const& coding,
                                                   QString* error) {
    std::vector<PictureMeans> all;
    for (QString const& file : names) {
        std::optional<Mosaic> const mosaic =
            files::isInterrupted() ? std::nullopt : readMosaic(file, coding, error);
        if (!mosaic)
            return std::nullopt;
        all.push_back(meansOf(*mosaic));
    }
    return all;
}

QString placeText(PictureMeans const& picture, solver::BlockMask const& blocks) {
    int const columns = picture.blocks.columns, rows = picture.blocks.rows;
    QRect area;
    for (int i = 0; i < int(blocks.size()); ++i)
        if (blocks(i))
            area |= QRect(i % columns, i / columns, 1, 1);
    auto const pixel = [](int edge, int count, uint32_t side) { return int64_t(edge) * side / count; };
    if (area.isEmpty())
        return {};
    return QStringLiteral("%1 of %2 blocks, columns %3 to %4, rows %5 to %6")
        .arg(blocks.count())
        .arg(blocks.size())
        .arg(pixel(area.left(), columns, picture.width))
        .arg(pixel(area.right() + 1, columns, picture.width) - 1)
        .arg(pixel(area.top(), rows, picture.height))
        .arg(pixel(area.bottom() + 1, rows, picture.height) - 1);
}
} // namespace shading
