#pragma once

#include "published/veyra2.h"

#include <cstdint>
#include <functional>

namespace pictara {
/// Bits of a device's addresses and of the words that it takes.
struct BusWidths {
    uint32_t address = 16;
    uint32_t data = 8;
};

/// The sensor's registers as the host reaches them. Whoever watches them is told after writes: at once, or
/// once for a whole group of changes when its outermost bracket closes.
class SensorRegisters {
public:
    /// `changed` is called after writes; the camera outlives this object.
    SensorRegisters(vy_Camera* camera, std::function<void()> changed);

    /// An empty bitfield name means the whole register; 0 when the sensor has no such register.
    [[nodiscard]] uint32_t read(char const* reg, char const* bitfield) const;
    /// False when the sensor does not take the value; nobody is told then.
    bool write(char const* reg, char const* bitfield, uint32_t value);
    bool writeAt(uint32_t addressSpace, uint32_t id, uint32_t address, uint32_t value);
    /// Replaces the masked bits of a register of address space 0; the value is that of the bits alone.
    bool writeBitsAt(uint32_t id, uint32_t address, uint32_t mask, uint32_t value);

    /// One byte of a device on the camera's serial bus, whose addresses and words have so many bits; 0 when
    /// it does not answer.
    [[nodiscard]] uint32_t readBusByte(uint32_t device, uint32_t address, BusWidths widths) const;
    bool writeBusByte(uint32_t device, uint32_t address, uint32_t value, BusWidths widths);

    /// Brackets may be nested; a closing one without an opening one is ignored.
    void beginChanges();
    void endChanges();

private:
    template <typename Write>
    bool written(Write write);
    [[nodiscard]] bool setWidths(BusWidths widths) const;

    vy_Camera* m_camera;
    std::function<void()> m_changed;
    uint32_t m_depth = 0;
    bool m_pending = false;
};
} // namespace pictara
