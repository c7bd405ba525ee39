#pragma once

#include <QImage>
#include <QWidget>

namespace pictara {
struct BlockReport;

/// Shows the latest picture as large as it fits on a dark ground, and over it, if wanted, how far the colours
/// of its blocks lie apart.
class LiveView : public QWidget {
public:
    using QWidget::QWidget;
    /// Keeps no share of the picture, whose memory is to be drawn into again.
    void setPicture(QImage const& picture);
    /// Lays the blocks' deviations over the picture; an empty report takes them away.
    void setUniformity(BlockReport const& blocks);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintLegend(QPainter& painter) const;

    QImage m_picture;
    QImage m_map; ///< a pixel a block
    int m_skippedRows = 0;
    double m_end = 0;     ///< of the map's colours
    double m_largest = 0; ///< of the deviations
};
} // namespace pictara
