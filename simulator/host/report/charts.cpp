#include "simulator/host/report/charts.h"

#include "simulator/host/report/output_folder.h"

#include <QJsonArray>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace pictara {
namespace {
constexpr int kColours = 255; // odd, so that one stands for the middle alone

QVector<QRgb> colourTable(QGradientStops const& stops) {
    QImage strip(kColours, 1, QImage::Format_RGB32);
    QLinearGradient gradient(0, 0, kColours, 0);
    gradient.setStops(stops);
    QPainter(&strip).fillRect(strip.rect(), gradient);
    auto const* const row = reinterpret_cast<QRgb const*>(strip.constScanLine(0));
    return {row, row + kColours};
}

QGradientStops signedColours() {
    return {{0, QColor(33, 102, 172)}, {0.5, QColor(244, 244, 244)}, {1, QColor(178, 24, 43)}};
}

// The area inside the axes, in the page's own units.
constexpr double kLeft = 46, kRight = 430, kTop = 8, kBottom = 190;

struct Range {
    double low = 0, high = 0;
};

// With room above and below, and a span even where all is flat.
Range rangeOf(std::vector<ProfileChart::Line> const& lines) {
    Range range;
    for (ProfileChart::Line const& line : lines)
        for (double const value : line.values)
            range = {std::min(range.low, value), std::max(range.high, value)};
    double const room = std::max(0.08 * (range.high - range.low), 0.01);
    return {range.low - room, range.high + room};
}

// Steps of 1, 2 or 5 times a power of ten, about so many in the range.
double stepOf(Range const& range) {
    constexpr int kAbout = 5;
    double const wanted = (range.high - range.low) / kAbout;
    double const decade = std::pow(10, std::floor(std::log10(wanted)));
    for (double const step : {1.0, 2.0, 5.0})
        if (step * decade >= wanted)
            return step * decade;
    return 10 * decade;
}

QString place(double position) { return QString::number(position, 'f', 1); }
} // namespace

QGradientStops risingColours() {
    // Five steps of the map "viridis", whose lightness rises evenly.
    return {{0, QColor(68, 1, 84)},
            {0.25, QColor(59, 82, 139)},
            {0.5, QColor(33, 145, 140)},
            {0.75, QColor(94, 201, 98)},
            {1, QColor(253, 231, 37)}};
}

QImage colourMap(std::vector<double> const& values, int columns, double low, double high,
                 QGradientStops const& stops) {
    if (values.empty())
        return {};
    QVector<QRgb> const colours = colourTable(stops);
    QImage map(columns, int(values.size()) / columns, QImage::Format_RGB32);
    for (int i = 0; i < columns * map.height(); ++i) {
        double const share = high > low ? std::clamp((values[size_t(i)] - low) / (high - low), 0.0, 1.0) : 0;
        map.setPixel(i % columns, i / columns, colours[int(std::lround(share * (kColours - 1)))]);
    }
    return map;
}

QJsonObject drawing(HeatMap const& chart) {
    QGradientStops const colours = chart.low < 0 ? signedColours() : risingColours();
    std::vector<double> scale(64);
    std::iota(scale.begin(), scale.end(), 0);
    auto const shown = [&](double value) { return QString::number(value, 'g', 3) + chart.unit; };
    return {{"title", chart.title},
            {"cells", dataUri(colourMap(chart.values, chart.columns, chart.low, chart.high, colours))},
            {"scale", dataUri(colourMap(scale, int(scale.size()), 0, scale.back(), colours))},
            {"low", shown(chart.low)},
            {"high", shown(chart.high)}};
}

QJsonObject drawing(ProfileChart const& chart) {
    Range const range = rangeOf(chart.lines);
    auto const height = [&](double value) {
        return place(kBottom - (kBottom - kTop) * (value - range.low) / (range.high - range.low));
    };
    QJsonArray ticks, lines;
    double const step = stepOf(range);
    for (double tick = std::ceil(range.low / step); tick * step <= range.high; ++tick)
        ticks.append(QJsonObject{{"place", height(tick * step)},
                                 {"label", QString::number(tick * step + 0.0, 'g', 4)}}); // no "-0"
    for (ProfileChart::Line const& line : chart.lines) {
        QString points;
        double const width = (kRight - kLeft) / std::max(1.0, double(line.values.size()) - 1);
        for (size_t i = 0; i < line.values.size(); ++i)
            points += place(kLeft + width * double(i)) + ',' + height(line.values[i]) + ' ';
        lines.append(QJsonObject{{"name", line.name}, {"points", points}, {"number", lines.size() + 1}});
    }
    return {{"title", chart.title}, {"ticks", ticks}, {"lines", lines}};
}

double largestOf(std::vector<double> const& values) {
    double largest = 0;
    for (double const value : values)
        largest = std::max(largest, std::abs(value));
    return largest;
}
} // namespace pictara
