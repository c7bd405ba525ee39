#include "simulator/pictures/block_report.h"

#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr int kColumns = 32;

// Blocks that cover a picture below its first rows without a gap, row by row, and after them one of the same
// size in the centre.
std::vector<QRect> blockRects(int width, int height, int columns, int rows, int skippedRows) {
    std::vector<QRect> rects;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            rects.emplace_back(QPoint(width * column / columns, height * row / rows),
                               QPoint(width * (column + 1) / columns - 1, height * (row + 1) / rows - 1));
    QSize const size(std::max(width / columns, 1), std::max(height / rows, 1));
    rects.emplace_back(QPoint((width - size.width()) / 2, (height - size.height()) / 2), size);
    for (QRect& rect : rects)
        rect.translate(0, skippedRows);
    return rects;
}

// Adds what a row has in each rectangle.
void add(uint32_t y, ColourRow const& row, std::vector<QRect> const& rects, std::vector<Colour>& sums) {
    std::vector<float> const* const planes[] = {&row.red, &row.green, &row.blue};
    for (size_t i = 0; i < rects.size(); ++i)
        if (QRect const& rect = rects[i]; int(y) >= rect.top() && int(y) <= rect.bottom())
            for (size_t colour = 0; colour < 3; ++colour)
                for (int x = rect.left(); x <= rect.right(); ++x)
                    sums[i][colour] += double((*planes[colour])[size_t(x)]);
}

void rateLuminance(BlockReport& report) {
    std::vector<double> blocks;
    std::transform(report.means.begin(), report.means.end(), std::back_inserter(blocks), luminance);
    std::vector<double> ordered = blocks;
    auto const middle = ordered.begin() + std::ptrdiff_t(ordered.size() / 2);
    std::nth_element(ordered.begin(), middle, ordered.end());
    double const median = *middle;
    for (double const block : blocks) {
        double const ofMedian = median > 0 ? std::abs(block / median - 1) : 0;
        double const ofCentre = report.centreLuminance > 0 ? std::abs(block / report.centreLuminance - 1) : 0;
        report.meanAgainstMedian += ofMedian / double(blocks.size());
        report.largestAgainstMedian = std::max(report.largestAgainstMedian, ofMedian);
        report.largestAgainstCentre = std::max(report.largestAgainstCentre, ofCentre);
    }
}

void rateColour(std::vector<QRect> const& rects, BlockReport& report) {
    std::vector<std::array<double, 2>> axes;
    std::transform(report.means.begin(), report.means.end(), std::back_inserter(axes), colourAxes);
    std::array<double, 2> mean{};
    for (auto const& block : axes)
        for (size_t axis = 0; axis < 2; ++axis)
            mean[axis] += block[axis] / double(axes.size());
    for (auto const& block : axes)
        report.deviations.push_back(std::hypot(block[0] - mean[0], block[1] - mean[1]));
    auto const largest = std::max_element(report.deviations.begin(), report.deviations.end());
    report.largestColourDeviation = *largest;
    report.worstBlock = rects[size_t(largest - report.deviations.begin())];
}
} // namespace

std::array<double, 2> colourAxes(Colour const& c) {
    constexpr double kDelta = 6.0 / 29;
    auto const f = [](double t) {
        return t > kDelta * kDelta * kDelta ? std::cbrt(t) : t / (3 * kDelta * kDelta) + 4.0 / 29;
    };
    double const x = f((0.4124 * c[0] + 0.3576 * c[1] + 0.1805 * c[2]) / 0.9505);
    double const y = f(luminance(c));
    double const z = f((0.0193 * c[0] + 0.1192 * c[1] + 0.9505 * c[2]) / 1.0890);
    return {500 * (x - y), 200 * (y - z)};
}

double luminance(Colour const& colour) {
    return kLuminance[0] * colour[0] + kLuminance[1] * colour[1] + kLuminance[2] * colour[2];
}

BlockReport measureBlocks(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                          ColourSettings const& settings) {
    BlockReport report;
    int const skippedRows = camera.unusableRows > 0 ? int(camera.unusableRows) + 1 : 0;
    int const width = int(frame.width), height = frame.height - skippedRows;
    if (width < 1 || height < 1)
        return report;
    int const columns = std::min(kColumns, width);
    int const rows = std::clamp(int(std::lround(double(columns) * height / width)), 1, height);
    std::vector<QRect> const rects = blockRects(width, height, columns, rows, skippedRows);
    std::vector<Colour> means(rects.size());
    if (!readLinear(frame, camera, settings,
                    [&](uint32_t y, ColourRow const& row) { add(y, row, rects, means); }))
        return report;
    for (size_t i = 0; i < rects.size(); ++i)
        for (double& channel : means[i])
            channel /= double(rects[i].width()) * rects[i].height();
    report.columns = columns;
    report.rows = rows;
    report.skippedRows = skippedRows;
    report.centreLuminance = luminance(means.back());
    means.pop_back();
    report.means = means;
    rateLuminance(report);
    rateColour(rects, report);
    return report;
}
} // namespace pictara
