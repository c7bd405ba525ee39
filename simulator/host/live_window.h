#pragma once

#include <QLabel>
#include <QTimer>

namespace pictara {

class FrameDelivery;

/// Shows the live picture; frames are delivered while the window is open.
class LiveWindow : public QLabel {
public:
    /// `frames` outlives the window.
    explicit LiveWindow(FrameDelivery& frames);
    /// No frame is delivered after this.
    void stop() { m_timer.stop(); }

private:
    void showNextFrame();

    FrameDelivery& m_frames;
    QTimer m_timer;
};

} // namespace pictara
