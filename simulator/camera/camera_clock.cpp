#include "simulator/camera/camera_clock.h"

#include <thread>

namespace simulator {

CameraClock::Duration CameraClock::elapsed() const {
    return m_isVirtual ? Duration::zero() : std::chrono::steady_clock::now() - m_start;
}

CameraClock::Duration CameraClock::now() const {
    return m_advanced + elapsed();
}

void CameraClock::useVirtualTime() {
    m_advanced += elapsed();
    m_isVirtual = true;
}

void CameraClock::advance(Duration time) {
    if (time > Duration::zero())
        m_advanced += time;
}

void CameraClock::wait(Duration time) {
    if (m_isVirtual)
        advance(time);
    else
        std::this_thread::sleep_for(time);
}

} // namespace simulator
