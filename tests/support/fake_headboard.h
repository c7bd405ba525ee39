#pragma once

#include "common/libraries.h"

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kestra {

/// What an operation on the device does in the place of its work.
enum class DeviceFault { None, NoAnswer, Failure, IgnoredWrite, BusyForEver };

struct FakeRegister {
    vy_RegisterDescription description{};
    std::map<std::string, vy_BitfieldDescription> bitfields;
    uint32_t value = 0;
};

/// The sensor's register map and the EEPROM behind it, reached through the functions of `veyra2`. The device
/// has 8192 bytes, pages of 32 bytes that wrap and a write cycle of 20 ms, all in virtual time: it moves with
/// the pauses of the code under test. One lives at a time.
class FakeHeadboard {
public:
    FakeHeadboard();
    ~FakeHeadboard();
    FakeHeadboard(FakeHeadboard const&) = delete;
    FakeHeadboard& operator=(FakeHeadboard const&) = delete;

    /// Adds a register of `bytes` bytes and returns it.
    FakeRegister& add(std::string const& name, uint32_t addressSpace, uint32_t id, uint32_t address,
                      uint32_t bytes, uint32_t value = 0);
    void addBitfield(std::string const& reg, std::string const& bitfield, uint32_t mask);
    /// The registers of an EEPROM bridge, `IO_EEPROM_*`.
    void addBridge();

    std::map<std::string, FakeRegister> registers;
    std::vector<uint8_t> device;
    uint32_t deviceAddress = 0xA8;
    std::vector<int> timesRead, timesWritten; ///< of each byte of the device

    /// `fault` hits the operation of this number, and with `faultLasts` all later ones; -1: none.
    DeviceFault fault = DeviceFault::None;
    int64_t faultAt = -1;
    bool faultLasts = false;
    int64_t operations = 0; ///< on the device so far

    std::chrono::milliseconds now{0};

    /// Fills in the functions that this fake stands for.
    static void fillIn(Veyra2& table);

private:
    friend struct FakeHeadboardFunctions;
    [[nodiscard]] int begin(uint32_t busAddress);
    [[nodiscard]] int read(uint32_t busAddress, uint32_t start, uint32_t count, uint32_t* words);
    [[nodiscard]] int write(uint32_t busAddress, uint32_t start, uint32_t count, uint32_t const* words);
    void waitForDevice();
    void runBridge(uint32_t command);
    [[nodiscard]] uint32_t bridgeStatus();

    DeviceFault m_now = DeviceFault::None; ///< the fault of the operation that runs
    std::chrono::milliseconds m_busyUntil{0};
    bool m_acknowledged = false;
};

} // namespace kestra
