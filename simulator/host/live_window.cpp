#include "simulator/host/live_window.h"

#include "simulator/host/frame_delivery.h"

#include <QPixmap>

namespace pictara {
namespace {

constexpr int kFrameIntervalMs = 66; // about 15 frames a second
constexpr QSize kInitialSize(960, 540);

} // namespace

LiveWindow::LiveWindow(FrameDelivery& frames) : m_frames(frames) {
    setWindowTitle(QStringLiteral("Pictara"));
    setAlignment(Qt::AlignCenter);
    setMinimumSize(320, 180); // so that the window may be made smaller than its picture
    resize(kInitialSize);
    connect(&m_timer, &QTimer::timeout, this, &LiveWindow::showNextFrame);
    m_timer.start(kFrameIntervalMs);
}

void LiveWindow::showNextFrame() {
    m_frames.deliverNext();
    if (!m_frames.picture().isNull())
        setPixmap(QPixmap::fromImage(m_frames.picture().scaled(size(), Qt::KeepAspectRatio)));
}

} // namespace pictara
