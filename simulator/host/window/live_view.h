#pragma once

#include <QGraphicsView>
#include <QImage>

namespace pictara {
struct BlockReport;

/// Shows the latest picture on a dark ground: as large as it fits or at a scale of one's own, with the
/// deviations of its blocks and a cross in its centre laid over it if wanted.
class LiveView : public QGraphicsView {
    Q_OBJECT
public:
    explicit LiveView(QWidget* parent = nullptr);
    /// Keeps no share of the picture, whose memory is to be drawn into again.
    void setPicture(QImage const& picture);
    /// Lays the deviations over the picture below so many rows at its top.
    void setUniformity(BlockReport const& blocks, int skippedRows);

    void showUniformity(bool isShown);
    [[nodiscard]] bool isUniformityShown() const;
    void showCross(bool isShown);
    /// As large as the view allows, also when that changes.
    void fit();
    /// One pixel of the picture is one of the screen.
    void showFullSize();
    void zoom(double factor);
    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// Screen pixels a picture pixel.
    void scaleChanged(double scale);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void drawForeground(QPainter* painter, QRectF const& exposed) override;

private:
    void setScale(double scale);
    void placeCross();

    QGraphicsPixmapItem* m_picture;
    QGraphicsPixmapItem* m_map;
    QGraphicsPathItem* m_cross;
    double m_end = 0;     ///< of the map's colours
    double m_largest = 0; ///< of the deviations
    bool m_isFitted = true;
};
} // namespace pictara
