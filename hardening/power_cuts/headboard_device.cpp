#include "headboard_device.h"

#include "common/libraries.h"
#include "common/system.h"

#include <algorithm>
#include <vector>

using namespace kestra;

namespace power_cuts {
namespace {

constexpr uint32_t kBusAddress = 0xA8;
constexpr int kNoAnswer = 12;

thread_local simulator::CameraClock* threadClock = nullptr;

int resultOf(simulator::BusAnswer answer) {
    return answer == simulator::BusAnswer::Acknowledged ? 0 : kNoAnswer;
}

} // namespace

HeadboardDevice::HeadboardDevice(simulator::EepromContents const& contents) : m_eeprom(contents, m_clock) {
    m_clock.useVirtualTime();
    threadClock = &m_clock;
}

HeadboardDevice::~HeadboardDevice() {
    threadClock = nullptr;
}

void HeadboardDevice::cutPowerAfter(uint64_t bytes) {
    m_eeprom.plan({simulator::DeviceFault::PowerCut, bytes, true});
}

void HeadboardDevice::restorePower() {
    m_eeprom.plan({});
}

void HeadboardDevice::install() {
    pauseFor.replace([](std::chrono::milliseconds duration) { threadClock->advance(duration); });
    Veyra2 library;
    library.vy_setMode = [](vy_Camera*, uint32_t, uint32_t) { return 0; };
    library.vy_readRegisters = [](vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                  uint32_t* words) {
        if (busAddress != kBusAddress)
            return kNoAnswer;
        std::vector<uint8_t> bytes(count);
        int const result = resultOf(of(camera).m_eeprom.read(start, bytes));
        std::copy(bytes.begin(), bytes.end(), words);
        return result;
    };
    library.vy_writeRegisters = [](vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                   uint32_t const* words) {
        if (busAddress != kBusAddress)
            return kNoAnswer;
        std::vector<uint8_t> bytes(count);
        std::transform(words, words + count, bytes.begin(), [](uint32_t word) { return uint8_t(word); });
        return resultOf(of(camera).m_eeprom.write(start, bytes));
    };
    installVeyra2(library);
}

} // namespace power_cuts
