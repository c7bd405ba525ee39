#include "simulator/host/report/display_blocks.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace pictara {
namespace {
// The sRGB transfer function with the threshold of its first edition (IEC 61966-2-1:1999).
double linearised(double shown) {
    double const c = shown / 255;
    return c > 0.03928 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92;
}

// CIE 1976 L*a*b*, the two colour axes, against the white 95.0, 100.0, 108.9.
std::array<double, 2> shownColourAxes(Colour const& shown) {
    auto const f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
    double const r = linearised(shown[0]), g = linearised(shown[1]), b = linearised(shown[2]);
    double const x = f((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.950);
    double const y = f(0.2126 * r + 0.7152 * g + 0.0722 * b);
    double const z = f((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.089);
    return {500 * (x - y), 200 * (y - z)};
}

void rate(std::vector<Colour> const& means, DisplayBlocks& blocks) {
    std::vector<std::array<double, 2>> axes;
    std::transform(means.begin(), means.end(), std::back_inserter(axes), shownColourAxes);
    std::array<double, 2> centre{};
    for (auto const& block : axes)
        for (size_t axis = 0; axis < 2; ++axis)
            centre[axis] += block[axis] / double(axes.size());
    for (auto const& block : axes)
        blocks.deviations.push_back(std::hypot(block[0] - centre[0], block[1] - centre[1]));
    blocks.largest = *std::max_element(blocks.deviations.begin(), blocks.deviations.end());
    blocks.mean =
        std::accumulate(blocks.deviations.begin(), blocks.deviations.end(), 0.0) / double(means.size());
}

// All of one size, so that pixels may lie between them.
std::vector<QRect> equalBlocks(int width, int height, int columns, int rows) {
    QSize const size(std::max(width / columns, 1), std::max(height / rows, 1));
    auto const start = [](int length, int index, int count, int block) {
        return std::min(length * index / count, length - block);
    };
    std::vector<QRect> rects;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            rects.emplace_back(
                QPoint(start(width, column, columns, size.width()), start(height, row, rows, size.height())),
                size);
    return rects;
}
} // namespace

DisplayBlocks rateDisplay(RowSource const& shown, int skippedRows) {
    int const height = shown.height - skippedRows;
    if (shown.width < 1 || height < 1)
        return {};
    double const aspect = double(shown.width) / height;
    DisplayBlocks blocks{.columns = 32, .rows = 18, .deviations = {}};
    if (aspect < 1.415)
        blocks = {.columns = 20, .rows = 15, .deviations = {}};
    else if (aspect < 1.64)
        blocks = {.columns = 24, .rows = 16, .deviations = {}};
    std::vector<QRect> rects = equalBlocks(shown.width, height, blocks.columns, blocks.rows);
    for (QRect& rect : rects)
        rect.translate(0, skippedRows);
    rate(blockMeans(shown, rects), blocks);
    return blocks;
}

DisplayBlocks rateDisplay(RowSource const& shown, int columns, int rows, int skippedRows) {
    LightGrid const grid = lightGrid(shown, columns, rows, skippedRows);
    DisplayBlocks blocks{.columns = grid.columns, .rows = grid.rows, .deviations = {}};
    if (!grid.isEmpty())
        rate(grid.cells, blocks);
    return blocks;
}
} // namespace pictara
