#pragma once

#include "common/libraries.h"
#include "published/host_records.h"
#include "simulator/camera/eeprom_device.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace kestra {
using simulator::DeviceFault;

struct FakeRegister {
    vy_RegisterDescription description{};
    std::map<std::string, vy_BitfieldDescription> bitfields;
    uint32_t value = 0;
};

/// The sensor's register map and the EEPROM behind it, reached through the functions of `veyra2`. Time moves
/// with the pauses of the code under test alone. A transfer that does not reach the device is a failure other
/// than "no answer". One lives at a time in a thread.
class FakeHeadboard {
public:
    explicit FakeHeadboard(simulator::EepromContents const& contents = simulator::blankContents());
    ~FakeHeadboard();

    /// Adds a register of `bytes` bytes.
    void add(std::string const& name, uint32_t addressSpace, uint32_t id, uint32_t address, uint32_t bytes,
             uint32_t value = 0);
    void addBitfield(std::string const& reg, std::string const& bitfield, uint32_t mask) {
        registers.at(reg).bitfields[bitfield] = {nullptr, mask, 0};
    }
    /// The registers of an EEPROM bridge, `IO_EEPROM_*`.
    void addBridge();

    /// Stands for the camera; valid while this lives.
    [[nodiscard]] vy_Camera* camera() { return reinterpret_cast<vy_Camera*>(this); }

    std::map<std::string, FakeRegister, std::less<>> registers;
    simulator::CameraClock clock;
    simulator::EepromDevice eeprom;
    simulator::EepromContents& device = eeprom.contents();
    uint32_t deviceAddress = 0xA8;
    /// A sensor that drives the bus itself begins another transfer at a page's end.
    bool splitsAtPages = false;
    std::vector<int> timesRead; ///< of each byte of the device
    int64_t operations = 0;     ///< on the bus so far

    /// The fault strikes the operation that is so many ahead, the next one being 0, and with `lasts` all
    /// later ones. It takes the place of what was planned before.
    void plan(DeviceFault fault, uint64_t ahead = 0, bool lasts = true) {
        eeprom.plan({fault, ahead + 1, lasts});
    }

    /// Fills in the functions that this fake stands for, and makes every pause one of its time.
    static void fillIn(Veyra2& table);
    /// The host's services for single bytes of the EEPROM.
    static void fillIn(HostServices& table);

private:
    [[nodiscard]] int read(uint32_t busAddress, uint32_t start, std::span<uint32_t> words);
    [[nodiscard]] int write(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words);
    [[nodiscard]] int writePages(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words);
    [[nodiscard]] int result(simulator::BusAnswer answer);
    void waitForDevice();
    void runBridge(uint32_t command);
    [[nodiscard]] uint32_t bridgeStatus();

    simulator::BusAnswer m_answer = simulator::BusAnswer::NotAcknowledged; ///< to the latest operation
};
} // namespace kestra
