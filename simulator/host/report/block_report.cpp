#include "simulator/host/report/block_report.h"

#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr int kColumns = 32;

// The axes a* and b* of CIE 1976 L*a*b* (CIE 15), of linear sRGB (IEC 61966-2-1) against its white, D65.
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

double medianOf(std::vector<double> values) {
    auto const middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
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

void rateColour(std::vector<QRect> const& rects, BlockReport& report) {
    std::vector<std::array<double, 2>> axes;
    std::transform(report.means.begin(), report.means.end(), std::back_inserter(axes), colourAxes);
    std::array<double, 2> mean{};
    for (auto const& block : axes)
        for (size_t axis = 0; axis < 2; ++axis)
            mean[axis] += block[axis] / double(axes.size());
    for (auto const& block : axes) {
        report.deviations.push_back(std::hypot(block[0] - mean[0], block[1] - mean[1]));
        report.meanColourDeviation += report.deviations.back() / double(axes.size());
    }
    auto const largest = std::max_element(report.deviations.begin(), report.deviations.end());
    report.largestColourDeviation = *largest;
    report.worstBlock = rects[size_t(largest - report.deviations.begin())];
}
} // namespace

BlockReport measureBlocks(RowSource const& linear, int skippedRows) {
    BlockReport report;
    int const width = linear.width, height = linear.height - skippedRows;
    if (width < 1 || height < 1)
        return report;
    report.columns = std::min(kColumns, width);
    report.rows = std::clamp(int(std::lround(double(report.columns) * height / width)), 1, height);
    std::vector<QRect> rects = gridCells(width, linear.height, report.columns, report.rows, skippedRows);
    // And one of the same size in the centre.
    QSize const size(std::max(width / report.columns, 1), std::max(height / report.rows, 1));
    rects.emplace_back(QPoint((width - size.width()) / 2, skippedRows + (height - size.height()) / 2), size);
    report.means = blockMeans(linear, rects);
    report.centreLuminance = luminance(report.means.back());
    report.means.pop_back();
    std::vector<double> blocks;
    std::transform(report.means.begin(), report.means.end(), std::back_inserter(blocks), luminance);
    rateLuminance(blocks, medianOf(blocks), report.largestAgainstMedian, report.meanAgainstMedian);
    rateLuminance(blocks, report.centreLuminance, report.largestAgainstCentre, report.meanAgainstCentre);
    rateColour(rects, report);
    return report;
}
} // namespace pictara
