#pragma once

#include "common/sensor.h"
#include "headboard/headboard_eeprom.h"

#include <memory>
#include <span>

namespace kestra {

/// One way to the bytes of the EEPROM. It borrows the sensor and answers the library's result: 0,
/// 12 when the device does not answer, anything else for a failure. After a failure the range is undefined.
class EepromTransport {
public:
    virtual ~EepromTransport() = default;
    [[nodiscard]] virtual int read(uint32_t offset, std::span<uint8_t> bytes) const = 0;
    [[nodiscard]] virtual int write(uint32_t offset, std::span<uint8_t const> bytes) const = 0;
};

/// The way that the open sensor offers; null when there is none or no camera.
[[nodiscard]] std::unique_ptr<EepromTransport> chooseTransport(HeadboardEeprom const& eeprom,
                                                               Sensor const& sensor);

} // namespace kestra
