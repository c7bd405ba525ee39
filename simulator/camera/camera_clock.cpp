#include "simulator/camera/camera_clock.h"

#include <thread>

namespace simulator {
CameraClock::Duration CameraClock::elapsed() const {
    return m_isVirtual ? Duration::zero() : std::chrono::steady_clock::now() - m_start;
}

CameraClock::Duration CameraClock::now() const { return m_advanced + elapsed(); }

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
        return advance(time);
    // A system's sleep may end early; who waited for the device must find it ready.
    for (Duration const end = now() + time; now() < end;)
        std::this_thread::sleep_for(std::chrono::ceil<std::chrono::milliseconds>(end - now()));
}
} // namespace simulator
