#pragma once

#include "published/veyra2.h"
#include "simulator/camera/eeprom_device.h"

namespace power_cuts {

/// A camera of which only the EEPROM answers, through serial transfers and in virtual time. A thread has one
/// at a time.
class HeadboardDevice {
public:
    explicit HeadboardDevice(simulator::EepromContents const& contents);
    ~HeadboardDevice();
    HeadboardDevice(HeadboardDevice const&) = delete;
    HeadboardDevice& operator=(HeadboardDevice const&) = delete;

    /// For the code under test; valid while this lives.
    [[nodiscard]] vy_Camera* camera() { return reinterpret_cast<vy_Camera*>(this); }

    /// From now on, the power fails as soon as so many bytes are stored, and stays away.
    void cutPowerAfter(uint64_t bytes);
    void restorePower();

    [[nodiscard]] simulator::EepromContents const& contents() const { return m_eeprom.contents(); }
    [[nodiscard]] uint64_t bytesWritten() const { return m_eeprom.bytesWritten(); }

    /// Takes the place of the sensor-access library and of every pause; before the first device.
    static void install();

private:
    static HeadboardDevice& of(vy_Camera* camera) { return *reinterpret_cast<HeadboardDevice*>(camera); }

    simulator::CameraClock m_clock;
    simulator::EepromDevice m_eeprom;
};

} // namespace power_cuts
