#include "simulator/host/report/charts.h"

#include <QBuffer>
#include <QJsonArray>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace pictara {
namespace {
constexpr int kColours = 255; // of a map; odd, so that one stands for the middle alone
// The area inside the axes, in the page's own units.
constexpr double kLeft = 46, kRight = 430, kTop = 8, kBottom = 190;

// Of lowest and highest value, with room above and below, and a span even where all is flat.
std::pair<double, double> rangeOf(std::vector<ProfileChart::Line> const& lines) {
    double low = 0, high = 0;
    for (ProfileChart::Line const& line : lines)
        for (double const value : line.values) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    double const room = std::max(0.08 * (high - low), 0.01);
    return {low - room, high + room};
}

// Steps of 1, 2 or 5 times a power of ten.
double stepOf(double wanted) {
    double const decade = std::pow(10, std::floor(std::log10(wanted)));
    for (double const step : {1.0, 2.0, 5.0})
        if (step * decade >= wanted)
            return step * decade;
    return 10 * decade;
}

QVector<QRgb> colourTable(QGradientStops const& stops) {
    QImage strip(kColours, 1, QImage::Format_RGB32);
    QLinearGradient gradient(0, 0, kColours, 0);
    gradient.setStops(stops);
    QPainter(&strip).fillRect(strip.rect(), gradient);
    auto const* const row = reinterpret_cast<QRgb const*>(strip.constScanLine(0));
    return {row, row + kColours};
}

QString place(double position) { return QString::number(position, 'f', 1); }
} // namespace

QByteArray pngOf(QImage const& picture) {
    // Passed as the quality, which Qt takes as the compressor's effort: the less, the higher the number.
    // Sensor noise hardly compresses; the usual effort takes four times as long and saves nothing.
    constexpr int kEffort = 50;
    QBuffer buffer;
    (void)(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "PNG", kEffort));
    return buffer.data();
}

QString dataUri(QImage const& picture) {
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(pngOf(picture).toBase64());
}

QGradientStops deviationColours() {
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
    static QGradientStops const diverging{
        {0, QColor(33, 102, 172)}, {0.5, QColor(244, 244, 244)}, {1, QColor(178, 24, 43)}};
    QGradientStops const colours = chart.low < 0 ? diverging : deviationColours();
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
    constexpr int kAboutTicks = 5;
    auto const range = rangeOf(chart.lines);
    double const low = range.first, high = range.second, step = stepOf((high - low) / kAboutTicks);
    auto const height = [&](double value) {
        return place(kBottom - (kBottom - kTop) * (value - low) / (high - low));
    };
    QJsonArray ticks, lines;
    for (double tick = std::ceil(low / step); tick * step <= high; ++tick)
        ticks.append(QJsonObject{{"place", height(tick * step)},
                                 {"label", QString::number(tick * step + 0.0, 'g', 4)}}); // no "-0"
    for (ProfileChart::Line const& line : chart.lines) {
        QString points;
        double const width = (kRight - kLeft) / std::max(1.0, double(line.values.size()) - 1);
        for (size_t i = 0; i < line.values.size(); ++i)
            points += place(kLeft + width * double(i)) + ',' + height(line.values[i]) + ' ';
        lines.append(QJsonObject{{"name", line.name}, {"points", points}, {"style", line.style}});
    }
    return {{"title", chart.title}, {"axis", chart.axis}, {"ticks", ticks}, {"lines", lines}};
}

double largestOf(std::vector<double> const& values) {
    return std::accumulate(values.begin(), values.end(), 0.0,
                           [](double largest, double value) { return std::max(largest, std::abs(value)); });
}
} // namespace pictara
