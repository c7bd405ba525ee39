#include "simulator/host/window/live_view.h"

#include "simulator/host/report/uniformity_map.h"

#include <QGraphicsPixmapItem>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr QSize kPreferredSize(960, 540);
constexpr QSize kSmallestSize(320, 180);
constexpr QColor kGround(48, 48, 48);
constexpr double kMapOpacity = 0.6;
constexpr double kWheelStep = 1.15;
constexpr double kLeastScale = 0.05, kGreatestScale = 16;
constexpr QSize kLegend(140, 12);
constexpr int kMargin = 10;
} // namespace

LiveView::LiveView(QWidget* parent)
    : QGraphicsView(parent), m_picture(new QGraphicsPixmapItem), m_map(new QGraphicsPixmapItem),
      m_cross(new QGraphicsPathItem) {
    setMinimumSize(kSmallestSize);
    setFrameShape(QFrame::NoFrame);
    setBackgroundBrush(kGround);
    setDragMode(QGraphicsView::ScrollHandDrag);
    setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
    setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    setToolTip(QStringLiteral("The live picture; zoom with the wheel or Ctrl+Plus and Ctrl+Minus, move it by "
                              "dragging or with the arrow keys"));
    setAccessibleName(QStringLiteral("Live picture"));
    setScene(new QGraphicsScene(this));
    m_picture->setTransformationMode(Qt::SmoothTransformation);
    m_map->setOpacity(kMapOpacity);
    m_map->hide();
    QPen pen(Qt::white);
    pen.setCosmetic(true);
    m_cross->setPen(pen);
    m_cross->hide();
    for (QGraphicsItem* const item : std::initializer_list<QGraphicsItem*>{m_picture, m_map, m_cross})
        scene()->addItem(item);
}

void LiveView::setPicture(QImage const& picture) {
    bool const isOtherSize = m_picture->pixmap().size() != picture.size();
    // A copy, as a pixmap may share the memory of the image that it is made of.
    m_picture->setPixmap(QPixmap::fromImage(picture.copy()));
    if (!isOtherSize)
        return;
    scene()->setSceneRect(m_picture->boundingRect());
    placeCross();
    if (m_isFitted)
        fit();
}

void LiveView::setUniformity(BlockReport const& blocks, int skippedRows) {
    m_largest = blocks.largestColourDeviation;
    m_end = nextColourEnd(m_end, m_largest);
    QPixmap const map = QPixmap::fromImage(uniformityMap(blocks, m_end));
    m_map->setPixmap(map);
    QSizeF const size = m_picture->boundingRect().size();
    if (map.isNull())
        return;
    m_map->setPos(0, skippedRows);
    m_map->setTransform(
        QTransform::fromScale(size.width() / map.width(), (size.height() - skippedRows) / map.height()));
}

void LiveView::showUniformity(bool isShown) { m_map->setVisible(isShown); }
bool LiveView::isUniformityShown() const { return m_map->isVisible(); }
void LiveView::showCross(bool isShown) { m_cross->setVisible(isShown); }

void LiveView::placeCross() {
    QRectF const area = scene()->sceneRect();
    QPointF const centre = area.center();
    double const radius = area.height() / 20;
    QPainterPath path;
    path.moveTo(area.left(), centre.y());
    path.lineTo(area.right(), centre.y());
    path.moveTo(centre.x(), area.top());
    path.lineTo(centre.x(), area.bottom());
    path.addEllipse(centre, radius, radius);
    m_cross->setPath(path);
}

void LiveView::fit() {
    m_isFitted = true;
    QSizeF const picture = scene()->sceneRect().size();
    if (!picture.isEmpty())
        setScale(std::min(width() / picture.width(), height() / picture.height()));
}

void LiveView::showFullSize() {
    m_isFitted = false;
    setScale(1 / devicePixelRatioF());
}

void LiveView::zoom(double factor) {
    m_isFitted = false;
    setScale(std::clamp(transform().m11() * factor, kLeastScale, kGreatestScale));
}

void LiveView::setScale(double scale) {
    // A fitted picture must not get bars by a rounded pixel, which would then shrink it.
    Qt::ScrollBarPolicy const bars = m_isFitted ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded;
    setHorizontalScrollBarPolicy(bars);
    setVerticalScrollBarPolicy(bars);
    setTransform(QTransform::fromScale(scale, scale));
    emit scaleChanged(scale * devicePixelRatioF());
}

void LiveView::resizeEvent(QResizeEvent* event) {
    QGraphicsView::resizeEvent(event);
    if (m_isFitted)
        fit();
}

void LiveView::wheelEvent(QWheelEvent* event) {
    zoom(std::pow(kWheelStep, event->angleDelta().y() / 120.0));
    event->accept();
}

void LiveView::drawForeground(QPainter* painter, QRectF const&) {
    if (!m_map->isVisible())
        return;
    painter->save();
    painter->resetTransform();
    QRect const bar(QPoint(kMargin, viewport()->height() - kMargin - kLegend.height()), kLegend);
    QString const text =
        QStringLiteral("0 to %1, largest deviation %2").arg(m_end, 0, 'f', 0).arg(m_largest, 0, 'f', 2);
    QRect const words = painter->fontMetrics().boundingRect(text).adjusted(0, 0, 1, 0);
    QRect ground = bar.adjusted(-6, -6, 18 + words.width(), 6);
    painter->fillRect(ground, QColor(0, 0, 0, 150));
    QLinearGradient gradient(bar.topLeft(), bar.topRight());
    gradient.setStops(deviationColours());
    painter->fillRect(bar, gradient);
    painter->setPen(Qt::white);
    painter->drawText(ground.adjusted(0, 0, -6, 0), Qt::AlignRight | Qt::AlignVCenter, text);
    painter->restore();
}

QSize LiveView::sizeHint() const { return kPreferredSize; }
} // namespace pictara
