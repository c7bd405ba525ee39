#include "simulator/host/report/uniformity_map.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

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
} // namespace

QGradientStops deviationColours() {
    // Five steps of the map "viridis", whose lightness rises evenly.
    return {{0, QColor(68, 1, 84)},
            {0.25, QColor(59, 82, 139)},
            {0.5, QColor(33, 145, 140)},
            {0.75, QColor(94, 201, 98)},
            {1, QColor(253, 231, 37)}};
}

QGradientStops signedColours() {
    return {{0, QColor(33, 102, 172)}, {0.5, QColor(244, 244, 244)}, {1, QColor(178, 24, 43)}};
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

double nextColourEnd(double present, double largest) {
    constexpr double kSmallestEnd = 2; // so that a good picture does not look like a bad one
    constexpr double kSlack = 1.5;     // so that noise about a whole number does not move the end to and fro
    bool const isKept = largest <= present && largest >= present - kSlack;
    return isKept ? present : std::max(kSmallestEnd, std::ceil(largest));
}

QImage uniformityMap(BlockReport const& blocks, double end) {
    return colourMap(blocks.deviations, blocks.columns, 0, end, deviationColours());
}
} // namespace pictara
