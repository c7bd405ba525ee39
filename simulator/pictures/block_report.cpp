#include "simulator/pictures/block_report.h"

#include <algorithm>
#include <cmath>
#include <numeric>

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

// The mean of each rectangle.
std::vector<Colour> meansOf(RowSource const& picture, std::vector<QRect> const& rects) {
    std::vector<Colour> means(rects.size());
    picture.read([&](uint32_t y, ColourRow const& row) {
        std::vector<float> const* const planes[] = {&row.red, &row.green, &row.blue};
        for (size_t i = 0; i < rects.size(); ++i)
            if (QRect const& rect = rects[i]; int(y) >= rect.top() && int(y) <= rect.bottom())
                for (size_t colour = 0; colour < 3; ++colour)
                    for (int x = rect.left(); x <= rect.right(); ++x)
                        means[i][colour] += double((*planes[colour])[size_t(x)]);
    });
    for (size_t i = 0; i < rects.size(); ++i)
        for (double& channel : means[i])
            channel /= double(rects[i].width()) * rects[i].height();
    return means;
}

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

// How far each block is from a reference.
std::vector<double> errorsAgainst(double reference, std::vector<double> const& blocks) {
    std::vector<double> errors;
    for (double const block : blocks)
        errors.push_back(reference > 0 ? std::abs(block / reference - 1) : 0);
    return errors;
}

double largestIn(std::vector<double> const& values) {
    return *std::max_element(values.begin(), values.end());
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

double luminance(Colour const& colour) {
    return 0.2126 * colour[0] + 0.7152 * colour[1] + 0.0722 * colour[2];
}

BlockReport measureBlocks(RowSource const& linear, int skippedRows) {
    BlockReport report;
    int const width = linear.width, height = linear.height - skippedRows;
    if (width < 1 || height < 1)
        return report;
    report.columns = std::min(kColumns, width);
    report.rows = std::clamp(int(std::lround(double(report.columns) * height / width)), 1, height);
    std::vector<QRect> const rects = blockRects(width, height, report.columns, report.rows, skippedRows);
    report.means = meansOf(linear, rects);
    report.centreLuminance = luminance(report.means.back());
    report.means.pop_back();
    std::vector<double> blocks;
    std::transform(report.means.begin(), report.means.end(), std::back_inserter(blocks), luminance);
    std::vector<double> const againstMedian = errorsAgainst(medianOf(blocks), blocks);
    report.largestAgainstMedian = largestIn(againstMedian);
    report.meanAgainstMedian =
        std::accumulate(againstMedian.begin(), againstMedian.end(), 0.0) / double(blocks.size());
    report.largestAgainstCentre = largestIn(errorsAgainst(report.centreLuminance, blocks));
    rateColour(rects, report);
    return report;
}
} // namespace pictara
