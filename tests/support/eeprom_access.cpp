#include "tests/support/eeprom_access.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

using namespace simulator;

namespace {
constexpr uint32_t kBusAddress = 0xA8;

bool readRaw(SimulatedCamera& camera, uint32_t address, QByteArray& bytes) {
    std::array<uint32_t, 2> words{};
    EXPECT_EQ(vy_setMode(camera.handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera.handle(), 2, 8), 0);
    if (vy_readRegisters(camera.handle(), kBusAddress, address, uint32_t(bytes.size()), words.data()) != 0)
        return false;
    std::copy_n(words.begin(), bytes.size(), bytes.begin());
    return true;
}

bool writeRaw(SimulatedCamera& camera, uint32_t address, QByteArray const& bytes) {
    std::array<uint32_t, 2> words{};
    std::transform(bytes.begin(), bytes.end(), words.begin(), [](char byte) { return uint8_t(byte); });
    EXPECT_EQ(vy_setMode(camera.handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera.handle(), 2, 8), 0);
    bool const isDone =
        vy_writeRegisters(camera.handle(), kBusAddress, address, uint32_t(bytes.size()), words.data()) == 0;
    camera.advanceTime(20);
    return isDone;
}

bool runBridge(SimulatedCamera& camera, uint32_t address, uint32_t command) {
    writeRegister(camera, "IO_EEPROM_I2C_ADDR", kBusAddress);
    writeRegister(camera, "IO_EEPROM_ADDR", address);
    if (vy_WriteSensorRegStr(camera.handle(), "IO_EEPROM_COMMAND", "", command) != 0)
        return false;
    uint32_t status = 0x10;
    for (int poll = 0; poll < 25 && (status & 0x10) != 0; ++poll) {
        camera.advanceTime(2);
        status = readRegister(camera, "IO_EEPROM_STATUS");
    }
    return status == 0x04;
}

bool readBridge(SimulatedCamera& camera, uint32_t address, QByteArray& bytes) {
    if (!runBridge(camera, address, bytes.size() == 2 ? 0x210 : 0x010))
        return false;
    uint32_t const data = readRegister(camera, "IO_EEPROM_DATA");
    bytes[0] = char(bytes.size() == 2 ? data >> 8 : data);
    bytes[bytes.size() - 1] = char(data);
    return true;
}

uint32_t bigFirst(QByteArray const& bytes) {
    uint32_t value = 0;
    for (char const byte : bytes)
        value = value << 8 | uint8_t(byte);
    return value;
}

bool writeBridge(SimulatedCamera& camera, uint32_t address, QByteArray const& bytes) {
    writeRegister(camera, "IO_EEPROM_DATA", bigFirst(bytes));
    return runBridge(camera, address, bytes.size() == 2 ? 0x280 : 0x080);
}

vy_RegisterDescription location(uint32_t address, int count) {
    vy_RegisterDescription description{};
    description.addressSpace = 1;
    description.id = kBusAddress;
    description.address = address;
    description.addressWidth = 16;
    description.dataWidth = 8;
    description.accessSize = uint32_t(count);
    return description;
}

bool readDescribed(SimulatedCamera& camera, uint32_t address, QByteArray& bytes) {
    uint32_t value = 0;
    vy_RegisterDescription const description = location(address, bytes.size());
    if (vy_ReadSensorReg(camera.handle(), &description, &value) != 0)
        return false;
    for (int i = bytes.size(); i-- > 0; value >>= 8)
        bytes[i] = char(value);
    return true;
}

bool writeDescribed(SimulatedCamera& camera, uint32_t address, QByteArray const& bytes) {
    vy_RegisterDescription const description = location(address, bytes.size());
    return vy_WriteSensorReg(camera.handle(), &description, bigFirst(bytes)) == 0;
}
} // namespace

EepromAccess const kEepromAccesses[3] = {
    {"raw", "polynomial", readRaw, writeRaw},
    {"bridge", "eeprom-bridge-71", readBridge, writeBridge},
    {"description", "bus-master-103", readDescribed, writeDescribed},
};

Camera openFor(EepromAccess const& access) {
    Camera camera = openProfile(access.profile);
    camera->useVirtualTime();
    return camera;
}

void programContents(SimulatedCamera& camera, QByteArray const& contents) {
    TestFiles const files;
    QString error;
    EXPECT_TRUE(camera.loadEeprom(files.write(QStringLiteral("contents"), contents), &error))
        << qPrintable(error);
}
