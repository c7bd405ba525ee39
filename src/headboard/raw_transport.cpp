#include "common/pause.h"
#include "headboard/eeprom_transport.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeDataBits = 2;
constexpr uint32_t kDataBits = 8;
// The device does not answer while it stores what was written.
constexpr std::chrono::milliseconds kWriteCycle{20};

} // namespace

int RawTransport::setWidths() const {
    int const result = m_sensor.setMode(kModeAddressBits, m_addressBits);
    return result == 0 ? m_sensor.setMode(kModeDataBits, kDataBits) : result;
}

int RawTransport::read(uint32_t offset, std::span<uint8_t> bytes) const {
    int result = setWidths();
    if (result != 0)
        return result;
    std::vector<uint32_t> words(bytes.size());
    result = m_sensor.readBus(m_deviceAddress, offset, words);
    std::transform(words.begin(), words.end(), bytes.begin(), [](uint32_t word) { return uint8_t(word); });
    return result;
}

int RawTransport::writeOnce(uint32_t offset, std::span<uint8_t const> bytes) const {
    std::vector<uint32_t> const words(bytes.begin(), bytes.end());
    int const result = m_sensor.writeBus(m_deviceAddress, offset, words);
    pauseFor(kWriteCycle);
    return result;
}

int RawTransport::write(uint32_t offset, std::span<uint8_t const> bytes) const {
    int result = setWidths();
    // Pairs at even addresses never cross a page of the device.
    for (size_t i = 0; i < bytes.size() && result == 0;) {
        bool const isPair = (offset + i) % 2 == 0 && i + 1 < bytes.size();
        size_t const count = isPair ? 2 : 1;
        result = writeOnce(uint32_t(offset + i), bytes.subspan(i, count));
        i += count;
    }
    return result;
}
