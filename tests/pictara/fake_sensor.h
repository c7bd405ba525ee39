#pragma once

#include "common/veyra2.h"

#include <cstdint>
#include <map>
#include <string>

/// A sensor of a few registers behind the functions of the sensor-access library, which this test program
/// defines itself. One at a time.
class FakeSensor {
public:
    FakeSensor();
    ~FakeSensor();

    /// Adds a register of an address space at an id and address, with the value 0.
    void add(std::string const& name, uint32_t space, uint32_t id, uint32_t address);
    [[nodiscard]] uint32_t value(std::string const& name) const { return m_values.at(name); }
    [[nodiscard]] vy_Camera* handle() { return reinterpret_cast<vy_Camera*>(this); }

    std::map<std::string, uint32_t> m_values;
    std::map<std::string, vy_RegisterDescription> m_descriptions;
    std::map<uint32_t, uint8_t> m_busBytes;
    std::map<uint32_t, uint32_t> m_modes;
};
