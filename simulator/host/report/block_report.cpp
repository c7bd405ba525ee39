#include "simulator/host/report/block_report.h"

#include "simulator/host/report/block_means.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace pictara {
namespace {
constexpr int kColumns = 32;

// CIE 1976 L*a*b* of linear sRGB against its own white, the two colour axes only.
std::array<double, 2> colourAxes(Colour const& c) {
    auto const f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
    double const x = f((0.4124 * c[0] + 0.3576 * c[1] + 0.1805 * c[2]) / 0.9505);
    double const y = f(0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]);
    double const z = f((0.0193 * c[0] + 0.1192 * c[1] + 0.9505 * c[2]) / 1.0890);
    return {500 * (x - y), 200 * (y - z)};
}

double medianOf(std::vector<double> values) {
    auto const middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The blocks of the grid, row by row, and after them one of the same size in the centre.
std::vector<QRect> blockRects(int width, int height) {
    int const columns = std::min(kColumns, width);
    int const rows = std::clamp(int(std::lround(double(columns) * height / width)), 1, height);
    std::vector<QRect> rects = gridCells(width, height, columns, rows);
    QSize const size(std::max(width / columns, 1), std::max(height / rows, 1));
    rects.emplace_back(QPoint((width - size.width()) / 2, (height - size.height()) / 2), size);
    return rects;
}

void rateLuminance(std::vector<double> const& blocks, double reference, double& largest, double& mean) {
    if (!(reference > 0))
        return;
    for (double const block : blocks) {
        double const error = std::abs(block / reference - 1);
        largest = std::max(largest, error);
        mean += error / double(blocks.size());
    }
}

void rateColour(std::vector<Colour> const& blocks, std::vector<QRect> const& rects, BlockReport& report) {
    std::array<double, 2> mean{};
    for (Colour const& block : blocks)
        for (size_t axis = 0; axis < 2; ++axis)
            mean[axis] += colourAxes(block)[axis] / double(blocks.size());
    report.worstBlock = rects.front();
    for (size_t i = 0; i < blocks.size(); ++i) {
        auto const axes = colourAxes(blocks[i]);
        double const deviation = std::hypot(axes[0] - mean[0], axes[1] - mean[1]);
        if (deviation > report.largestColourDeviation) {
            report.largestColourDeviation = deviation;
            report.worstBlock = rects[i];
        }
    }
}
} // namespace

BlockReport measureBlocks(RowSource const& linear) {
    BlockReport report;
    if (linear.width < 1 || linear.height < 1)
        return report;
    std::vector<QRect> const rects = blockRects(linear.width, linear.height);
    std::vector<Colour> means = blockMeans(linear, rects);
    double const centre = luminance(means.back());
    means.pop_back();
    std::vector<double> blocks;
    std::transform(means.begin(), means.end(), std::back_inserter(blocks), luminance);
    rateLuminance(blocks, medianOf(blocks), report.largestAgainstMedian, report.meanAgainstMedian);
    rateLuminance(blocks, centre, report.largestAgainstCentre, report.meanAgainstCentre);
    rateColour(means, rects, report);
    return report;
}
} // namespace pictara
