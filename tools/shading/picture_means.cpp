#include "tools/shading/picture_means.h"

#include "simulator/files/interruption.h"

#include <QRect>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace shading {
namespace {
using simulator::Plane;

// The white level, or the level below it at which samples pile up: many a sensor saturates before what its
// file tells.
double saturationOf(Mosaic const& mosaic) {
    constexpr double kLeastShare = 0.001; // of the samples
    constexpr uint32_t kPile = 4;         // times as many as at the next level below
    std::vector<uint32_t> counts(65536);
    for (uint16_t const sample : mosaic.samples)
        ++counts[sample];
    auto const isSeen = [](uint32_t count) { return count != 0; };
    auto const top = std::find_if(counts.rbegin(), counts.rend() - 1, isSeen);
    auto const below = std::find_if(std::min(top + 1, counts.rend() - 1), counts.rend() - 1, isSeen);
    auto const level = double(counts.rend() - 1 - top);
    bool const isPile = level > mosaic.whiteLevel / 2 && *top > kPile * *below &&
                        *top > kLeastShare * double(mosaic.samples.size());
    return isPile ? std::min(mosaic.whiteLevel, level) : mosaic.whiteLevel;
}

// From neighbours of one plane, which differ by noise alone: their mean distance is 2 / sqrt(pi) standard
// deviations.
double noiseInTheMiddle(Mosaic const& mosaic) {
    using Samples = Eigen::Array<uint16_t, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    constexpr int kShare = 16; // of a side
    int const width = int(mosaic.width), columns = width / 2, rows = int(mosaic.height) / 2;
    uint16_t const* const first =
        &mosaic.samples[(mosaic.bayerPhase >> 1) * mosaic.width + (~mosaic.bayerPhase & 1)];
    Eigen::ArrayXXd const green = Eigen::Map<Samples const, 0, Eigen::Stride<Eigen::Dynamic, 2>>(
                                      first, rows, columns, {2 * Eigen::Index(width), 2})
                                      .block(rows / 2 - rows / kShare / 2, columns / 2 - columns / kShare / 2,
                                             rows / kShare, columns / kShare + 1)
                                      .cast<double>();
    Eigen::Index const pairs = green.cols() - 1;
    double const level = green.mean() - mosaic.blackLevel[Plane::GreenRed];
    double const distance = (green.leftCols(pairs) - green.rightCols(pairs)).abs().mean();
    return level > 0 ? distance * std::sqrt(std::numbers::pi) / 2 / level : 0;
}

void measureCells(PictureMeans& means) {
    // In counts, for each plane has a black level of its own. Where a colour is completed, green comes from
    // both of its planes in equal parts.
    constexpr double kScale = 65535;
    simulator::CameraDescription camera = means.of.description();
    camera.blackLevel = 0;
    camera.whiteLevel = kScale;
    pictara::BlockReport const report = pictara::measureBlocks(means.of.frame(), camera, {});
    auto const& level = means.of.blackLevel;
    Eigen::Array<double, 1, 3> const black(
        level[Plane::Red], (level[Plane::GreenRed] + level[Plane::GreenBlue]) / 2, level[Plane::Blue]);
    means.columns = report.columns;
    means.rows = report.rows;
    means.cells = ((cellsOf(report, means.of.orientation) * kScale).rowwise() - black).rowwise() /
                  (means.of.whiteLevel - black);
}
} // namespace

Cells cellsOf(pictara::BlockReport const& blocks, uint32_t orientation) {
    Cells cells(blocks.columns * blocks.rows, 3);
    for (int i = 0; i < cells.rows(); ++i) {
        int const x = i % blocks.columns, y = i / blocks.columns;
        int const column = (orientation & 1) != 0 ? blocks.columns - 1 - x : x;
        int const row = (orientation & 2) != 0 ? blocks.rows - 1 - y : y;
        cells.row(i) = Eigen::Map<Eigen::Array<double, 1, 3> const>(
            blocks.means[size_t(row) * size_t(blocks.columns) + size_t(column)].data());
    }
    return cells;
}

std::optional<simulator::MeasuredShading::Illuminant> gainsOf(Cells const& cells, double kelvin) {
    if (!(cells > 0).all())
        return std::nullopt;
    simulator::MeasuredShading::Illuminant illuminant{kelvin, {}};
    for (int colour = 0; colour < 3; ++colour) {
        Eigen::ArrayXd const gains = cells.col(colour).maxCoeff() / cells.col(colour);
        illuminant.gains[size_t(colour)].assign(gains.begin(), gains.end());
    }
    return illuminant;
}

PictureMeans meansOf(Mosaic mosaic) {
    PictureMeans means{.of = std::move(mosaic), .blocks = {}, .inspection = {}, .cells = {}};
    means.of.whiteLevel = saturationOf(means.of);
    means.noise = noiseInTheMiddle(means.of);
    measureCells(means);
    // The black levels are taken off below, for the layout knows but one.
    simulator::SensorLayout const layout{.width = means.of.width,
                                         .height = means.of.height,
                                         .sampleBytes = 2,
                                         .whiteLevel = means.of.whiteLevel};
    means.blocks = solver::readRaw(means.of.samples.data(), layout, means.of.bayerPhase, 0);
    for (size_t plane = 0; plane < simulator::kPlaneCount; ++plane) {
        double const black = means.of.blackLevel[plane] / means.of.whiteLevel;
        Eigen::ArrayXd& mean = means.blocks.planes[plane].mean;
        mean = (mean - black) / (1 - black);
    }
    means.inspection = inspect(means.blocks, layout);
    means.of.samples = std::vector<uint16_t>(); // {} would keep the room
    return means;
}

std::optional<PictureMeans> readMeans(QString const& file, Coding const& coding, QString* error) {
    auto mosaic = files::isInterrupted() ? std::nullopt : readMosaic(file, coding, error);
    return mosaic ? std::optional(meansOf(*std::move(mosaic))) : std::nullopt;
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
        .arg(pixel(area.left(), columns, picture.of.width))
        .arg(pixel(area.right() + 1, columns, picture.of.width) - 1)
        .arg(pixel(area.top(), rows, picture.of.height))
        .arg(pixel(area.bottom() + 1, rows, picture.of.height) - 1);
}
} // namespace shading
