#include "simulator/host/report/charts.h"

#include <algorithm>
#include <cmath>
#include <qcustomplot.h>
#include <unordered_map>

namespace pictara {
namespace {
constexpr int kPlotWidth = 440; // of the page's pixels
constexpr int kProfileHeight = 250;
constexpr int kMapWidth = 300; // of the area inside the axes

struct Palette {
    QColor background, text, grid, neutral, negative, positive;
    QColor lines[4];
};

Palette const& paletteOf(Scheme scheme) {
    static Palette const light{
        0xFFFFFF, 0x202024, 0xD7D7DC, 0xF4F4F4, 0x2166AC, 0xB2182B, {0xC85A14, 0x1E64B4, 0x5A5A5A, 0x008000}};
    static Palette const dark{
        0x191921, 0xE1E1E6, 0x46464C, 0x303135, 0x5AA5F5, 0xFA6E5A, {0xFAA050, 0x6EB4FF, 0xBEBEBE, 0x00FF00}};
    return scheme == Scheme::Dark ? dark : light;
}

void paintAxis(QCPAxis& axis, Palette const& palette) {
    axis.setBasePen(QPen(palette.text));
    axis.setTickPen(QPen(palette.text));
    axis.setSubTickPen(QPen(palette.text));
    axis.setLabelFont(QFont(QStringLiteral("sans"), 8));
    axis.setTickLabelFont(QFont(QStringLiteral("sans"), 8));
    axis.setLabelColor(palette.text);
    axis.setTickLabelColor(palette.text);
    axis.grid()->setPen(QPen(palette.grid, 0, Qt::DotLine));
    axis.grid()->setZeroLinePen(QPen(palette.text, 0));
}

// A plot with its axes in the scheme's colours and a title above them.
void prepare(QCustomPlot& plot, QString const& title, Palette const& palette) {
    plot.setBackground(palette.background);
    plot.plotLayout()->insertRow(0);
    auto* const heading = new QCPTextElement(&plot, title, QFont(QStringLiteral("sans"), 9, QFont::Bold));
    heading->setTextColor(palette.text);
    plot.plotLayout()->addElement(0, 0, heading);
    for (QCPAxis* const axis : {plot.xAxis, plot.yAxis, plot.xAxis2, plot.yAxis2})
        paintAxis(*axis, palette);
    plot.axisRect()->setupFullAxesBox();
    for (QCPAxis* const axis : {plot.xAxis2, plot.yAxis2})
        axis->setTicks(false);
}

int nearestOf(QVector<QRgb> const& palette, QRgb colour) {
    auto const distance = [colour](QRgb other) {
        int const red = qRed(other) - qRed(colour), green = qGreen(other) - qGreen(colour),
                  blue = qBlue(other) - qBlue(colour);
        return red * red + green * green + blue * blue;
    };
    auto const nearest = std::min_element(palette.begin(), palette.end(),
                                          [&](QRgb a, QRgb b) { return distance(a) < distance(b); });
    return int(nearest - palette.begin());
}

// As many colours as a palette holds, which makes the picture a third as large: the most frequent ones as
// they are, so that a chart's background is the page's, and for each other the nearest of these.
QImage indexed(QImage const& picture) {
    constexpr int kMostColours = 256;
    QImage const source = picture.convertToFormat(QImage::Format_RGB32);
    std::unordered_map<QRgb, int> uses;
    for (int y = 0; y < source.height(); ++y)
        for (int x = 0; x < source.width(); ++x)
            ++uses[source.pixel(x, y)];
    std::vector<std::pair<int, QRgb>> byUse;
    byUse.reserve(uses.size());
    for (auto const& [colour, count] : uses)
        byUse.emplace_back(count, colour);
    std::sort(byUse.rbegin(), byUse.rend());
    QVector<QRgb> palette;
    for (auto const& [count, colour] : byUse)
        if (palette.size() < kMostColours)
            palette.append(colour);
    std::unordered_map<QRgb, int> places;
    for (auto const& [count, colour] : byUse)
        places[colour] = nearestOf(palette, colour);
    QImage result(source.size(), QImage::Format_Indexed8);
    result.setColorTable(palette);
    for (int y = 0; y < source.height(); ++y)
        for (int x = 0; x < source.width(); ++x)
            result.scanLine(y)[x] = uchar(places[source.pixel(x, y)]);
    return result;
}

QImage pictureOf(QCustomPlot& plot, int width, int height) {
    return indexed(plot.toPixmap(width, height, kChartScale).toImage());
}

// A middle of its own colour lets nobody take a small negative value for a positive one.
QCPColorGradient gradientOf(HeatMap const& chart, Palette const& palette) {
    QCPColorGradient gradient;
    gradient.clearColorStops();
    gradient.setLevelCount(255); // odd, for a level at zero
    if (chart.isSigned) {
        gradient.setColorStopAt(0, palette.negative);
        gradient.setColorStopAt(0.5, palette.neutral);
        gradient.setColorStopAt(1, palette.positive);
        return gradient;
    }
    // Five steps of the map "viridis", whose lightness rises evenly.
    QColor const steps[] = {{68, 1, 84}, {59, 82, 139}, {33, 145, 140}, {94, 201, 98}, {253, 231, 37}};
    for (int i = 0; i < 5; ++i)
        gradient.setColorStopAt(i / 4.0, steps[i]);
    return gradient;
}

QCPRange rangeOf(HeatMap const& chart) {
    if (chart.values.empty())
        return {0, 1};
    auto const [low, high] = std::minmax_element(chart.values.begin(), chart.values.end());
    constexpr double kLeastSpan = 0.01; // what is flat must not be shown as a mountain of rounding
    if (!chart.isSigned)
        return {*low, std::max({*high, chart.end, *low + kLeastSpan})};
    double const span = std::max({std::abs(*low), std::abs(*high), kLeastSpan});
    return {-span, span};
}

void addScale(QCustomPlot& plot, QCPColorMap& map, QString const& unit, Palette const& palette) {
    auto* const scale = new QCPColorScale(&plot);
    scale->setType(QCPAxis::atRight);
    scale->setBarWidth(14);
    plot.plotLayout()->addElement(1, 1, scale);
    map.setColorScale(scale);
    scale->axis()->setLabel(unit);
    paintAxis(*scale->axis(), palette);
    for (QCPAxis* const axis : scale->findChildren<QCPAxis*>())
        paintAxis(*axis, palette);
    // The bar is as high as the map.
    auto* const group = new QCPMarginGroup(&plot);
    plot.axisRect()->setMarginGroup(QCP::msBottom | QCP::msTop, group);
    scale->setMarginGroup(QCP::msBottom | QCP::msTop, group);
}

double highestCount(HistogramChart const& chart) {
    return chart.counts.empty() ? 1 : *std::max_element(chart.counts.begin(), chart.counts.end());
}
} // namespace

bool hasCharts() { return true; }

QImage drawChart(HeatMap const& chart, Scheme scheme) {
    Palette const& palette = paletteOf(scheme);
    QCustomPlot plot;
    prepare(plot, chart.title, palette);
    auto* const map = new QCPColorMap(plot.xAxis, plot.yAxis);
    map->data()->setSize(chart.columns, chart.rows);
    // Positions are those of the cells' centres, in percent of the picture.
    double const across = 50.0 / chart.columns, down = 50.0 / chart.rows;
    map->data()->setRange({across, 100 - across}, {down, 100 - down});
    for (int row = 0; row < chart.rows; ++row)
        for (int column = 0; column < chart.columns; ++column)
            map->data()->setCell(column, row,
                                 chart.values[size_t(row) * size_t(chart.columns) + size_t(column)]);
    map->setInterpolate(false);
    addScale(plot, *map, chart.unit, palette);
    map->setGradient(gradientOf(chart, palette));
    map->setDataRange(rangeOf(chart));
    plot.xAxis->setRange(0, 100);
    plot.yAxis->setRange(0, 100);
    plot.yAxis->setRangeReversed(true);
    plot.xAxis->setLabel(QStringLiteral("% of the width"));
    plot.yAxis->setLabel(QStringLiteral("% of the height"));
    constexpr int kBesides = 150, kAboveAndBelow = 85;
    return pictureOf(plot, kMapWidth + kBesides, int(kMapWidth / chart.aspect) + kAboveAndBelow);
}

QImage drawChart(ProfileChart const& chart, Scheme scheme) {
    Palette const& palette = paletteOf(scheme);
    QCustomPlot plot;
    prepare(plot, chart.title, palette);
    for (size_t i = 0; i < chart.lines.size(); ++i) {
        ProfileChart::Line const& line = chart.lines[i];
        QVector<double> x, y;
        double const steps = std::max(1.0, double(line.values.size()) - 1);
        for (size_t k = 0; k < line.values.size(); ++k) {
            x.append(chart.start + (chart.end - chart.start) * double(k) / steps);
            y.append(line.values[k]);
        }
        QCPGraph* const graph = plot.addGraph();
        graph->setName(line.name);
        graph->setData(x, y, true);
        graph->setPen(QPen(palette.lines[i % 4], 1.6, line.isReference ? Qt::DashLine : Qt::SolidLine));
    }
    plot.rescaleAxes();
    plot.yAxis->scaleRange(1.15);
    plot.xAxis->setLabel(chart.xLabel);
    plot.yAxis->setLabel(chart.yLabel);
    // Below the axes, where it hides no line.
    plot.plotLayout()->addElement(2, 0, plot.legend);
    plot.plotLayout()->setRowStretchFactor(2, 0.001);
    plot.legend->setFillOrder(QCPLegend::foColumnsFirst);
    plot.legend->setVisible(true);
    plot.legend->setBrush(palette.background);
    plot.legend->setBorderPen(Qt::NoPen);
    plot.legend->setFont(QFont(QStringLiteral("sans"), 8));
    plot.legend->setTextColor(palette.text);
    return pictureOf(plot, kPlotWidth, kProfileHeight);
}

QImage drawChart(HistogramChart const& chart, Scheme scheme) {
    Palette const& palette = paletteOf(scheme);
    QCustomPlot plot;
    prepare(plot, chart.title, palette);
    QVector<double> x, y;
    for (size_t i = 0; i < chart.counts.size(); ++i) {
        x.append((double(i) + 0.5) * chart.binWidth);
        y.append(chart.counts[i]);
    }
    auto* const bars = new QCPBars(plot.xAxis, plot.yAxis);
    bars->setWidth(chart.binWidth * 0.92);
    bars->setData(x, y, true);
    bars->setPen(Qt::NoPen);
    bars->setBrush(palette.lines[1]);
    plot.xAxis->setRange(0, chart.binWidth * double(chart.counts.size()));
    plot.yAxis->setRange(0, 1.1 * highestCount(chart));
    plot.xAxis->setLabel(chart.xLabel);
    plot.yAxis->setLabel(chart.yLabel);
    return pictureOf(plot, kPlotWidth, kProfileHeight);
}
} // namespace pictara
