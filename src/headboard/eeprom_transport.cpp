#include "headboard/eeprom_transport.h"

std::unique_ptr<EepromTransport> chooseTransport(HeadboardEeprom const& eeprom) {
    if (!eeprom->camera)
        return nullptr;
    Sensor const sensor(eeprom->camera);
    uint32_t const deviceAddress = eeprom->deviceAddress;
    uint32_t const addressBits = eeprom->addressBits;
    if (!eeprom->bridgeOnly)
        return std::make_unique<RawTransport>(sensor, deviceAddress, addressBits);
    if (sensor.existsRegister("IO_EEPROM_I2C_ADDR"))
        return std::make_unique<BridgeTransport>(sensor, deviceAddress);
    if (sensor.existsRegister("DMA_CTRL"))
        return std::make_unique<BusDescriptionTransport>(sensor, deviceAddress, addressBits);
    return nullptr;
}
