#include "simulator/host/report/uniformity_map.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr int kColours = 256;

QVector<QRgb> colourTable() {
    QImage strip(kColours, 1, QImage::Format_RGB32);
    QLinearGradient gradient(0, 0, kColours, 0);
    gradient.setStops(deviationColours());
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

double nextColourEnd(double present, double largest) {
    constexpr double kSmallestEnd = 2; // so that a good picture does not look like a bad one
    constexpr double kSlack = 1.5;     // so that noise about a whole number does not move the end to and fro
    bool const isKept = largest <= present && largest >= present - kSlack;
    return isKept ? present : std::max(kSmallestEnd, std::ceil(largest));
}

QImage uniformityMap(BlockReport const& blocks, double end) {
    static QVector<QRgb> const colours = colourTable();
    if (blocks.deviations.empty())
        return {};
    QImage map(blocks.columns, blocks.rows, QImage::Format_RGB32);
    for (int row = 0; row < blocks.rows; ++row)
        for (int column = 0; column < blocks.columns; ++column) {
            double const deviation = blocks.deviations[size_t(row * blocks.columns + column)];
            double const share = end > 0 ? std::clamp(deviation / end, 0.0, 1.0) : 0;
            map.setPixel(column, row, colours[int(std::lround(share * (kColours - 1)))]);
        }
    return map;
}
} // namespace pictara
