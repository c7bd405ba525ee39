#include "simulator/host/window/picture_views.h"

#include "simulator/host/report/charts.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <span>

namespace pictara {
namespace {
constexpr QColor kGround(48, 48, 48);
constexpr QColor kLegendGround(0, 0, 0, 150);
constexpr double kMapOpacity = 0.6;
constexpr double kSmallestEnd = 2; // so that a good picture does not look like a bad one
constexpr double kSlack = 1.5;     // so that noise about a whole number does not move the end to and fro
constexpr QSize kLegend(140, 12);
constexpr int kMargin = 10;

// A line of a chart.
struct Curve {
    char const* name;
    QColor colour;
    size_t channel;
    bool isRatio; ///< to green

    [[nodiscard]] double of(Colour const& light) const {
        constexpr double kDark = 0.002;
        return !isRatio ? 100 * light[channel] : light[1] > kDark ? light[channel] / light[1] : 0;
    }
};

constexpr Curve kLight[] = {
    {"R", {222, 60, 60}, 0, false}, {"G", {40, 160, 60}, 1, false}, {"B", {80, 110, 255}, 2, false}};
constexpr Curve kRatios[] = {{"R/G", {0xC8, 0x64, 0x1E}, 0, true}, {"B/G", {0x3B, 0x82, 0xC4}, 2, true}};

// The axis ends at whole steps, so that noise does not move it.
void drawChart(QPainter& painter, QRectF const& area, QColor const& ink, std::vector<Colour> const& profile,
               std::span<Curve const> curves) {
    double const step = curves[0].isRatio ? 0.05 : 10;
    QRectF range;
    std::vector<QPolygonF> lines(curves.size());
    for (size_t i = 0; i < curves.size(); ++i) {
        for (Colour const& light : profile)
            lines[i].append({double(lines[i].size()), curves[i].of(light)});
        range |= lines[i].boundingRect();
    }
    double const low = step * std::floor(range.top() / step);
    double const high = std::max(low + step, step * std::ceil(range.bottom() / step));
    double const lineHeight = painter.fontMetrics().height();
    QRectF const plot = area.adjusted(2.5 * lineHeight, lineHeight + 6, -8, -8);
    painter.setPen(ink);
    for (double const end : {low, high}) {
        double const y = end == low ? plot.bottom() : plot.top();
        painter.drawLine(QLineF(plot.left(), y, plot.right(), y));
        painter.drawText(QPointF(area.left() + 4, y + lineHeight / 3),
                         QString::asprintf(curves[0].isRatio ? "%.2f" : "%.0f%%", end));
    }
    QTransform const toPlot = QTransform::fromTranslate(plot.left(), plot.bottom())
                                  .scale(plot.width() / range.width(), plot.height() / (low - high))
                                  .translate(0, -low);
    QPointF corner(plot.left(), area.top() + lineHeight);
    for (size_t i = 0; i < curves.size(); ++i) {
        painter.setPen(QPen(curves[i].colour, 1.5));
        painter.drawPolyline(toPlot.map(lines[i]));
        QRectF const bounds = lines[i].boundingRect();
        QString const told =
            QString::asprintf("%s %.3g..%.3g    ", curves[i].name, bounds.top(), bounds.bottom());
        painter.drawText(corner, told);
        corner.rx() += painter.fontMetrics().horizontalAdvance(told);
    }
}
} // namespace

void LiveView::setPicture(QImage const& picture) {
    m_picture = picture;
    update();
}

void LiveView::setUniformity(BlockReport const& blocks) {
    m_largest = blocks.largestColourDeviation;
    // The colours' end follows the largest one up at once, and down only when that is well below.
    if (m_largest > m_end || m_largest < m_end - kSlack)
        m_end = std::max(kSmallestEnd, std::ceil(m_largest));
    m_map = colourMap(blocks.deviations, blocks.columns, 0, m_end, deviationColours());
    m_skippedRows = blocks.skippedRows;
    update();
}

std::optional<QPoint> LiveView::pointed() const {
    QPoint const at = mapFromGlobal(QCursor::pos()) - m_area.topLeft();
    if (!underMouse() || !QRect(QPoint(), m_area.size()).contains(at))
        return std::nullopt;
    return QPoint(at.x() * m_picture.width() / m_area.width(), at.y() * m_picture.height() / m_area.height());
}

void LiveView::mousePressEvent(QMouseEvent*) {
    if (auto const place = pointed())
        emit rowChosen(place->y());
}

void LiveView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), kGround);
    if (m_picture.isNull())
        return;
    m_area = QRect(QPoint(), m_picture.size().scaled(size(), Qt::KeepAspectRatio));
    m_area.moveCenter(rect().center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(m_area, m_picture);
    if (m_map.isNull())
        return;
    int const skipped = m_area.height() * m_skippedRows / m_picture.height();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.setOpacity(kMapOpacity);
    painter.drawImage(m_area.adjusted(0, skipped, 0, 0), m_map);
    painter.setOpacity(1);
    paintLegend(painter);
}

void LiveView::paintLegend(QPainter& painter) const {
    QRect const bar(QPoint(kMargin, height() - kMargin - kLegend.height()), kLegend);
    QString const text = QString::asprintf("0 to %.0f, largest deviation %.2f", m_end, m_largest);
    QRect const ground = bar.adjusted(-6, -6, 18 + painter.fontMetrics().horizontalAdvance(text), 6);
    QLinearGradient gradient(bar.topLeft(), bar.topRight());
    gradient.setStops(deviationColours());
    painter.fillRect(ground, kLegendGround);
    painter.fillRect(bar, gradient);
    painter.setPen(Qt::white);
    painter.drawText(ground.adjusted(0, 0, -6, 0), Qt::AlignRight | Qt::AlignVCenter, text);
}

QPixmap profileChart(std::vector<Colour> const& profile, QWidget const& place) {
    QPixmap chart(place.size() * place.devicePixelRatioF());
    chart.setDevicePixelRatio(place.devicePixelRatioF());
    chart.fill(place.palette().base().color());
    QPainter painter(&chart);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(place.font());
    QRectF const upper(0, 0, place.width(), place.height() / 2.0);
    QColor const ink = place.palette().text().color();
    drawChart(painter, upper, ink, profile, kLight);
    drawChart(painter, upper.translated(0, upper.height()), ink, profile, kRatios);
    return chart;
}
} // namespace pictara
