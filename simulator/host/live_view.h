#pragma once

#include <QImage>
#include <QWidget>

namespace pictara {

/// Shows the latest picture as large as it fits, in its own proportions, on a dark ground.
class LiveView : public QWidget {
public:
    explicit LiveView(QWidget* parent = nullptr);
    /// Keeps no share of the picture, whose memory is to be drawn into again.
    void setPicture(QImage const& picture);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_fitted; ///< the picture at the size it had room for when it came, in device pixels
};

} // namespace pictara
