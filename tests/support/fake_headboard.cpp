#include "tests/support/fake_headboard.h"

#include "common/system.h"
#include "tests/support/fake_host.h"
#include "tests/support/must_hold.h"

#include <array>
#include <bit>

namespace kestra {
using simulator::BusAnswer;

namespace {
constexpr uint32_t kDataTypeOfNoBytes = 100; // unlike a size, so that mixing the two up shows
constexpr int kFailure = 5;
constexpr int kNoAnswer = 12;

thread_local FakeHeadboard* headboard = nullptr;

FakeRegister* find(vy_Camera* camera, char const* reg) {
    MUST_HOLD(camera); // the library would crash
    auto const found = headboard->registers.find(std::string_view(reg));
    return found == headboard->registers.end() ? nullptr : &found->second;
}

uint32_t maskOf(FakeRegister const& reg, char const* bitfield) {
    return *bitfield ? reg.bitfields.at(bitfield).mask : 0xFFFFFFFF;
}
} // namespace

FakeHeadboard::FakeHeadboard(simulator::EepromContents const& contents)
    : eeprom(contents, clock), timesRead(device.size()) {
    clock.useVirtualTime();
    headboard = this;
}

FakeHeadboard::~FakeHeadboard() { headboard = nullptr; }

void FakeHeadboard::fillIn(Veyra2& table) {
    pauseFor.replace([](std::chrono::milliseconds duration) {
        headboard->clock.advance(duration);
        noteCall("pause", duration.count());
    });
    table.vy_ExistsRegister = [](vy_Camera* camera, char const* reg) {
        noteCall("existsRegister", reg);
        return int(find(camera, reg) != nullptr);
    };
    table.vy_FindRegister = [](vy_Camera* camera, char const* reg) -> vy_RegisterDescription const* {
        FakeRegister* const found = find(camera, reg);
        noteCall("findRegister", reg);
        return found ? &found->description : nullptr;
    };
    table.vy_FindBitfield = [](vy_Camera* camera, char const* reg,
                               char const* bitfield) -> vy_BitfieldDescription const* {
        FakeRegister* const found = find(camera, reg);
        return found && found->bitfields.contains(bitfield) ? &found->bitfields[bitfield] : nullptr;
    };
    table.vy_FindRegisterAddr = [](vy_Camera*, uint32_t address, uint32_t space,
                                   uint32_t id) -> vy_RegisterDescription const* {
        noteCall("findRegisterAddr", address, space, id);
        for (auto const& [name, reg] : headboard->registers)
            if (vy_RegisterDescription const& d = reg.description;
                d.address == address && d.addressSpace == space && d.id == id)
                return &d;
        return nullptr;
    };
    table.vy_dataSize = [](uint32_t dataType) { return dataType - kDataTypeOfNoBytes; };
    table.vy_ReadSensorRegStr = [](vy_Camera* camera, char const* reg, char const* bitfield,
                                   uint32_t* value) {
        FakeRegister* const found = find(camera, reg);
        noteCall("read", reg, bitfield);
        if (!found)
            return -1;
        uint32_t const mask = maskOf(*found, bitfield);
        bool const isStatus = std::string_view(reg) == "IO_EEPROM_STATUS";
        uint32_t const whole = isStatus ? headboard->bridgeStatus() : found->value;
        *value = (whole & mask) >> std::countr_zero(mask);
        return 0;
    };
    table.vy_WriteSensorRegStr = [](vy_Camera* camera, char const* reg, char const* bitfield,
                                    uint32_t value) {
        FakeRegister* const found = find(camera, reg);
        noteCall("write", reg, bitfield, value);
        if (!found)
            return -1;
        uint32_t const mask = maskOf(*found, bitfield);
        found->value = (found->value & ~mask) | (value << std::countr_zero(mask) & mask);
        if (std::string_view(reg) == "IO_EEPROM_COMMAND")
            headboard->runBridge(value);
        return 0;
    };
    table.vy_ReadSensorReg = [](vy_Camera*, vy_RegisterDescription const* reg, uint32_t* value) {
        noteCall("readDescribed", reg->addressSpace, reg->id, reg->addressWidth, reg->dataWidth,
                 reg->dataType, reg->address, reg->accessSize);
        headboard->waitForDevice();
        std::array<uint32_t, 2> words{};
        int const result = headboard->read(reg->id, reg->address, std::span(words).first(reg->accessSize));
        *value = reg->accessSize == 2 ? words[0] << 8 | words[1] : words[0];
        return result;
    };
    table.vy_WriteSensorReg = [](vy_Camera*, vy_RegisterDescription const* reg, uint32_t value) {
        noteCall("writeDescribed", reg->address, reg->accessSize, value);
        headboard->waitForDevice();
        std::array const words = {value >> 8, value};
        return headboard->writePages(reg->id, reg->address, std::span(words).last(reg->accessSize));
    };
    table.vy_readRegisters = [](vy_Camera*, uint32_t busAddress, uint32_t start, uint32_t count,
                                uint32_t* words) {
        noteCall("readBus", busAddress, start, count);
        return headboard->read(busAddress, start, {words, count});
    };
    table.vy_writeRegisters = [](vy_Camera*, uint32_t busAddress, uint32_t start, uint32_t count,
                                 uint32_t const* words) {
        noteCall("writeBus", busAddress, start, count, words[0]);
        return headboard->write(busAddress, start, {words, count});
    };
    table.vy_setMode = [](vy_Camera*, uint32_t mode, uint32_t value) {
        noteCall("setMode", mode, value);
        return 0;
    };
    table.vy_InvalidateRegCache = [](vy_Camera*) { noteCall("invalidateCache"); };
    table.vy_stopTransport = [](vy_Camera*) {
        noteCall("stopTransport");
        return 0;
    };
    table.vy_CloseCameras = [] { noteCall("closeCameras"); };
}

void FakeHeadboard::fillIn(HostServices& table) {
    table.readBusByte = [](uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
        uint32_t const byte = device == headboard->deviceAddress ? headboard->device.at(address) : 0U;
        noteCall("readBusByte", device, address, addressBits, dataBits);
        return byte;
    };
    table.writeBusByte = [](uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,
                            uint32_t dataBits) {
        if (device == headboard->deviceAddress)
            headboard->device.at(address) = uint8_t(value);
        noteCall("writeBusByte", device, address, value, addressBits, dataBits);
    };
}

void FakeHeadboard::add(std::string const& name, uint32_t addressSpace, uint32_t id, uint32_t address,
                        uint32_t bytes, uint32_t value) {
    vy_RegisterDescription const description = {
        nullptr, addressSpace, id, address, 16, bytes * 8, bytes, kDataTypeOfNoBytes + bytes, 0};
    registers[name] = {.description = description, .bitfields = {}, .value = value};
}

void FakeHeadboard::addBridge() {
    for (char const* const name : {"I2C_ADDR", "ADDR", "COMMAND", "STATUS", "DATA"})
        add(std::string("IO_EEPROM_") + name, 0, 0, uint32_t(0x3100 + 2 * registers.size()), 2);
}

void FakeHeadboard::waitForDevice() { clock.advance(eeprom.readyAt() - clock.now()); }

int FakeHeadboard::result(BusAnswer answer) {
    m_answer = answer;
    if (answer == BusAnswer::TransportFailed)
        return kFailure;
    return answer == BusAnswer::Acknowledged ? 0 : kNoAnswer;
}

int FakeHeadboard::read(uint32_t busAddress, uint32_t start, std::span<uint32_t> words) {
    ++operations;
    if (busAddress != deviceAddress)
        return result(BusAnswer::NotAcknowledged);
    MUST_HOLD(start + words.size() <= device.size());
    std::vector<uint8_t> bytes(words.size());
    int const status = result(eeprom.read(start, bytes));
    for (size_t i = 0; status == 0 && i < bytes.size(); ++i) {
        words[i] = bytes[i];
        ++timesRead[start + i];
    }
    return status;
}

int FakeHeadboard::write(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) {
    ++operations;
    if (busAddress != deviceAddress)
        return result(BusAnswer::NotAcknowledged);
    MUST_HOLD(start < device.size());
    std::vector<uint8_t> const bytes(words.begin(), words.end());
    return result(eeprom.write(start, bytes));
}

int FakeHeadboard::writePages(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words) {
    bool const isCrossing =
        splitsAtPages && words.size() == 2 && (start + 1) % simulator::kEepromPageSize == 0;
    int const status = write(busAddress, start, isCrossing ? words.first(1) : words);
    if (status != 0 || !isCrossing)
        return status;
    waitForDevice();
    return write(busAddress, start + 1, words.last(1));
}

void FakeHeadboard::runBridge(uint32_t command) {
    size_t const count = command & 0x200 ? 2 : 1;
    auto const valueOf = [&](std::string_view name) -> uint32_t& {
        return registers.find(name)->second.value;
    };
    uint32_t const address = valueOf("IO_EEPROM_ADDR"), busAddress = valueOf("IO_EEPROM_I2C_ADDR");
    uint32_t& data = valueOf("IO_EEPROM_DATA");
    std::array words = {data >> 8 & 0xFF, data & 0xFF};
    auto const moved = std::span(words).last(count);
    if (command & 0x080)
        (void)writePages(busAddress, address, moved);
    else if (read(busAddress, address, moved) == 0)
        data = (count == 2 ? words[0] << 8 : 0) | words[1];
}

uint32_t FakeHeadboard::bridgeStatus() {
    bool const isBusy = m_answer == BusAnswer::Busy || clock.now() < eeprom.readyAt();
    return (isBusy ? 0x10U : 0U) | (m_answer == BusAnswer::Acknowledged ? 0x04U : 0U);
}
} // namespace kestra
