#pragma once

#include "simulator/pictures/block_report.h"

#include <QImage>
#include <QWidget>
#include <optional>

namespace pictara {
/// Shows the latest picture as large as it fits on a dark ground, and over it, if wanted, how far the colours
/// of its blocks lie apart.
class LiveView : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;
    void setPicture(QImage const& picture);
    /// The picture's pixel under the pointer; nothing beside the picture.
    [[nodiscard]] std::optional<QPoint> pointed() const;
    /// Lays the blocks' deviations over the picture; an empty report takes them away.
    void setUniformity(BlockReport const& blocks);

signals:
    void rowChosen(int row);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void paintLegend(QPainter& painter) const;

    QImage m_picture;
    QRect m_area; ///< of the picture in the widget
    QImage m_map; ///< a pixel a block
    int m_skippedRows = 0;
    double m_end = 0;     ///< of the map's colours
    double m_largest = 0; ///< of the deviations
};

/// A chart as large as the place: linear light along a line, and below it R/G and B/G, each with its range.
[[nodiscard]] QPixmap profileChart(std::vector<Colour> const& profile, QWidget const& place);
} // namespace pictara
