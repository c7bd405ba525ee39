#include "tests/support/eeprom_access.h"

#include <gtest/gtest.h>
#include <iterator>

using namespace simulator;

namespace {
constexpr uint32_t kBusAddress = 0xA8;

bool moveRaw(SimulatedCamera& camera, Transfer const& transfer, uint32_t& value) {
    EXPECT_EQ(vy_setMode(camera.handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera.handle(), 2, 8), 0);
    uint32_t bytes[] = {value >> 8, value & 0xFF};
    uint32_t* const first = std::end(bytes) - transfer.count;
    auto const move = [&](auto library) {
        return library(camera.handle(), kBusAddress, transfer.address, transfer.count, first) == 0;
    };
    bool const isDone = transfer.writes ? move(vy_writeRegisters) : move(vy_readRegisters);
    if (transfer.writes)
        camera.advanceTime(20);
    value = bytes[0] << 8 | bytes[1];
    return isDone;
}

bool moveByBridge(SimulatedCamera& camera, Transfer const& transfer, uint32_t& value) {
    if (transfer.writes)
        writeRegister(camera, "IO_EEPROM_DATA", value);
    writeRegister(camera, "IO_EEPROM_I2C_ADDR", kBusAddress);
    writeRegister(camera, "IO_EEPROM_ADDR", transfer.address);
    uint32_t const command = (transfer.writes ? 0x080 : 0x010) + (transfer.count == 2 ? 0x200 : 0);
    if (vy_WriteSensorRegStr(camera.handle(), "IO_EEPROM_COMMAND", "", command) != 0)
        return false;
    uint32_t status = 0x10;
    for (int poll = 0; poll < 25 && (status & 0x10) != 0; ++poll) {
        camera.advanceTime(2);
        status = readRegister(camera, "IO_EEPROM_STATUS");
    }
    value = readRegister(camera, "IO_EEPROM_DATA");
    return status == 0x04;
}

bool moveDescribed(SimulatedCamera& camera, Transfer const& transfer, uint32_t& value) {
    vy_RegisterDescription const description{nullptr, 1, kBusAddress, transfer.address, 16, 8, transfer.count,
                                             0,       0};
    return (transfer.writes ? vy_WriteSensorReg(camera.handle(), &description, value)
                            : vy_ReadSensorReg(camera.handle(), &description, &value)) == 0;
}
} // namespace

EepromAccess const kEepromAccesses[3] = {
    {"raw", "polynomial", moveRaw},
    {"bridge", "eeprom-bridge-71", moveByBridge},
    {"description", "bus-master-103", moveDescribed},
};

bool EepromAccess::read(SimulatedCamera& camera, uint32_t address, QByteArray& bytes) const {
    uint32_t value = 0;
    if (!move(camera, {address, uint32_t(bytes.size()), false}, value))
        return false;
    for (int i = bytes.size(); i-- > 0; value >>= 8)
        bytes[i] = char(value);
    return true;
}

bool EepromAccess::write(SimulatedCamera& camera, uint32_t address, QByteArray const& bytes) const {
    uint32_t value = 0;
    for (char const byte : bytes)
        value = value << 8 | uint8_t(byte);
    return move(camera, {address, uint32_t(bytes.size()), true}, value);
}

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
