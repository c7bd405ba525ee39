#include "simulator/host/window/picture_views.h"

#include "simulator/host/report/charts.h"
#include "simulator/pictures/block_report.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr QColor kGround(48, 48, 48);
constexpr QColor kLegendGround(0, 0, 0, 150);
constexpr double kMapOpacity = 0.6;
constexpr double kSmallestEnd = 2; // so that a good picture does not look like a bad one
constexpr double kSlack = 1.5;     // so that noise about a whole number does not move the end to and fro
constexpr QSize kLegend(140, 12);
constexpr int kMargin = 10;
} // namespace

void LiveView::setPicture(QImage const& picture) {
    m_picture = picture.copy();
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

void LiveView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), kGround);
    if (m_picture.isNull())
        return;
    QRect area(QPoint(), m_picture.size().scaled(size(), Qt::KeepAspectRatio));
    area.moveCenter(rect().center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(area, m_picture);
    if (m_map.isNull())
        return;
    area.setTop(area.top() + area.height() * m_skippedRows / m_picture.height());
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.setOpacity(kMapOpacity);
    painter.drawImage(area, m_map);
    painter.setOpacity(1);
    paintLegend(painter);
}

void LiveView::paintLegend(QPainter& painter) const {
    QRect const bar(QPoint(kMargin, height() - kMargin - kLegend.height()), kLegend);
    QString const text =
        QStringLiteral("0 to %1, largest deviation %2").arg(m_end, 0, 'f', 0).arg(m_largest, 0, 'f', 2);
    QRect const ground = bar.adjusted(-6, -6, 18 + painter.fontMetrics().horizontalAdvance(text), 6);
    QLinearGradient gradient(bar.topLeft(), bar.topRight());
    gradient.setStops(deviationColours());
    painter.fillRect(ground, kLegendGround);
    painter.fillRect(bar, gradient);
    painter.setPen(Qt::white);
    painter.drawText(ground.adjusted(0, 0, -6, 0), Qt::AlignRight | Qt::AlignVCenter, text);
}
} // namespace pictara
