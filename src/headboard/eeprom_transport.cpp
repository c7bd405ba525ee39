#include "headboard/eeprom_transport.h"

#include "common/system.h"

#include <algorithm>
#include <vector>

namespace kestra {
namespace {
constexpr uint32_t kModeAddressBits = 1;
constexpr uint32_t kModeDataBits = 2;
constexpr uint32_t kModeBridge = 3;
constexpr uint32_t kDataBits = 8;
constexpr uint32_t kSerialBus = 1;
// The device does not answer while it stores what was written.
constexpr std::chrono::milliseconds kWriteCycle{20};

constexpr uint32_t kCommandRead = 0x010;
constexpr uint32_t kCommandWrite = 0x080;
constexpr uint32_t kCommandTwoBytes = 0x200;

constexpr uint32_t kStatusAcknowledged = 0x04;
constexpr uint32_t kStatusBusy = 0x10;
constexpr int kMostPolls = 25;
constexpr std::chrono::milliseconds kPollInterval{2};

constexpr int kTransferFailed = 1;

/// Where the bytes are, as the EEPROM told it when the transfer began.
struct Device {
    Sensor const& sensor;
    uint32_t address;
    uint32_t addressBits;
};

// Registers and descriptions transfer one byte or two, the first of which is the high one.
bool isPair(std::span<uint8_t const> piece) { return piece.size() == 2; }

uint32_t wordOf(std::span<uint8_t const> piece) {
    return isPair(piece) ? uint32_t(piece[0]) << 8 | piece[1] : piece[0];
}

void putWord(std::span<uint8_t> piece, uint32_t word) {
    piece.back() = uint8_t(word);
    if (isPair(piece))
        piece.front() = uint8_t(word >> 8);
}

int setWidths(Device const& device) {
    int const result = device.sensor.setMode(kModeAddressBits, device.addressBits);
    return result == 0 ? device.sensor.setMode(kModeDataBits, kDataBits) : result;
}

int readRaw(Device const& device, uint32_t at, std::span<uint8_t> piece) {
    std::vector<uint32_t> words(piece.size());
    int const result = device.sensor.readBus(device.address, at, words);
    std::ranges::transform(words, piece.begin(), [](uint32_t word) { return uint8_t(word); });
    return result;
}

int writeRaw(Device const& device, uint32_t at, std::span<uint8_t const> piece) {
    std::vector<uint32_t> const words(piece.begin(), piece.end());
    int const result = device.sensor.writeBus(device.address, at, words);
    pauseFor(kWriteCycle);
    return result;
}

int setBridge(Device const& device, char const* reg, uint32_t value) {
    return device.sensor.writeRegister(reg, "", value);
}

int selectBridge(Device const& device) {
    int const result = device.sensor.setMode(kModeBridge, 0);
    return result == 0 ? setBridge(device, "IO_EEPROM_I2C_ADDR", device.address) : result;
}

int runCommand(Device const& device, uint32_t command, std::span<uint8_t const> piece) {
    uint32_t const count = isPair(piece) ? kCommandTwoBytes : 0;
    int const result = setBridge(device, "IO_EEPROM_COMMAND", command | count);
    if (result != 0)
        return result;
    uint32_t status = kStatusBusy;
    for (int poll = 0; poll < kMostPolls && (status & kStatusBusy); ++poll) {
        pauseFor(kPollInterval);
        status = device.sensor.readRegister("IO_EEPROM_STATUS", "");
    }
    bool const done = !(status & kStatusBusy) && (status & kStatusAcknowledged);
    return done ? 0 : kTransferFailed;
}

int readBridge(Device const& device, uint32_t at, std::span<uint8_t> piece) {
    int result = setBridge(device, "IO_EEPROM_ADDR", at);
    if (result == 0)
        result = runCommand(device, kCommandRead, piece);
    if (result == 0)
        putWord(piece, device.sensor.readRegister("IO_EEPROM_DATA", ""));
    return result;
}

int writeBridge(Device const& device, uint32_t at, std::span<uint8_t const> piece) {
    // Of a pair only the second byte travels, behind a zero. Deliberately not repaired: it is the word that
    // these bridges have always been sent. A verification reports what got lost.
    uint32_t const data = piece.back();
    int result = setBridge(device, "IO_EEPROM_ADDR", at);
    if (result == 0)
        result = setBridge(device, "IO_EEPROM_DATA", data);
    return result == 0 ? runCommand(device, kCommandWrite, piece) : result;
}

vy_RegisterDescription describe(Device const& device, uint32_t at, std::span<uint8_t const> piece) {
    return {.name = nullptr,
            .addressSpace = kSerialBus,
            .id = device.address,
            .address = at,
            .addressWidth = device.addressBits,
            .dataWidth = kDataBits,
            .accessSize = uint32_t(piece.size()),
            .dataType = 0,
            .reserved = 0};
}

int readDescribed(Device const& device, uint32_t at, std::span<uint8_t> piece) {
    uint32_t word = 0;
    int const result = device.sensor.readRegister(describe(device, at, piece), word);
    putWord(piece, word);
    return result;
}

int writeDescribed(Device const& device, uint32_t at, std::span<uint8_t const> piece) {
    return device.sensor.writeRegister(describe(device, at, piece), wordOf(piece));
}

struct Way {
    int (*prepare)(Device const& device);
    int (*read)(Device const& device, uint32_t at, std::span<uint8_t> piece);
    int (*write)(Device const& device, uint32_t at, std::span<uint8_t const> piece);
    size_t mostRead; ///< bytes of a piece; those that are written have two
    bool isAligned;  ///< pairs are at even addresses and so never cross a page of the device
};
/// Serial transfers of the library, for all sensors that pass their bus through.
constexpr Way kRaw = {setWidths, readRaw, writeRaw, SIZE_MAX, true};
/// The sensor's own bus master, driven by its registers `IO_EEPROM_*`.
constexpr Way kBridge = {selectBridge, readBridge, writeBridge, 2, false};
/// The library's access by description, with a description made for each piece.
constexpr Way kDescribed = {[](Device const&) { return 0; }, readDescribed, writeDescribed, 2, false};
constexpr Way kNoWay = {[](Device const&) { return kTransferFailed; }, readRaw, writeRaw, 2, false};

Way const& chooseWay(HeadboardEeprom const& eeprom, Sensor const& sensor) {
    if (!sensor)
        return kNoWay;
    if (!eeprom.bridgeOnly)
        return kRaw;
    if (sensor.existsRegister("IO_EEPROM_I2C_ADDR"))
        return kBridge;
    return sensor.existsRegister("DMA_CTRL") ? kDescribed : kNoWay;
}

// Piece by piece, until one fails.
template <typename Byte, typename Transfer>
int transferPieces(Way const& way, Device const& device, uint32_t offset, std::span<Byte> bytes, size_t most,
                   Transfer transfer) {
    int result = way.prepare(device);
    for (size_t i = 0; i < bytes.size() && result == 0;) {
        auto const at = uint32_t(offset + i);
        size_t const count = std::min(way.isAligned ? most - at % 2 : most, bytes.size() - i);
        result = transfer(device, at, bytes.subspan(i, count));
        i += count;
    }
    return result;
}
} // namespace

int readDevice(HeadboardEeprom const& eeprom, Sensor const& sensor, uint32_t offset,
               std::span<uint8_t> bytes) {
    Device const device{sensor, eeprom.deviceAddress, eeprom.addressBits};
    Way const& way = chooseWay(eeprom, sensor);
    return transferPieces(way, device, offset, bytes, way.mostRead, way.read);
}

int writeDevice(HeadboardEeprom const& eeprom, Sensor const& sensor, uint32_t offset,
                std::span<uint8_t const> bytes) {
    Device const device{sensor, eeprom.deviceAddress, eeprom.addressBits};
    Way const& way = chooseWay(eeprom, sensor);
    return transferPieces(way, device, offset, bytes, 2, way.write);
}
} // namespace kestra
