#include "simulator/host/live_view.h"

#include <QPainter>

namespace pictara {
namespace {

constexpr QSize kPreferredSize(960, 540);
constexpr QSize kSmallestSize(320, 180);
constexpr QColor kGround(48, 48, 48);

} // namespace

LiveView::LiveView(QWidget* parent) : QWidget(parent) {
    setMinimumSize(kSmallestSize);
    setAttribute(Qt::WA_OpaquePaintEvent); // the ground is painted with the picture, so nothing flickers
}

void LiveView::setPicture(QImage const& picture) {
    QSize const fitted = picture.size().scaled(size() * devicePixelRatioF(), Qt::KeepAspectRatio);
    // Scaling to the same size would only share the memory.
    m_fitted = fitted == picture.size()
                   ? picture.copy()
                   : picture.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    update();
}

QSize LiveView::sizeHint() const {
    return kPreferredSize;
}

void LiveView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), kGround);
    if (m_fitted.isNull())
        return;
    // Fitted anew, as the window may have been resized since the picture came.
    QRectF place({}, QSizeF(m_fitted.size()).scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(QRectF(rect()).center());
    painter.drawImage(place, m_fitted);
}

} // namespace pictara
