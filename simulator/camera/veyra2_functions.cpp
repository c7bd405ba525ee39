#include "simulator/camera/camera_handle.h"
#include "simulator/camera/installed_files.h"
#include "simulator/camera/register_map.h"
#include "simulator/camera/simulated_camera.h"

#include "common/veyra2.h"

#include <QFile>

// The library's functions over the simulated camera. A null or closed camera, a null name and a register that
// the sensor lacks are answered, never followed.

#define VEYRA2_FUNCTION extern "C" SIMULATED_CAMERA_API

namespace {

using simulator::RegisterMap;

constexpr uint32_t kSerialBusSpace = 1; // of a transient description

RegisterMap::Register* findByName(vy_Camera* camera, char const* reg) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open && reg ? open->registers.find(reg) : nullptr;
}

/// Bits that a bitfield name stands for; an empty or null name stands for the whole register, 0 for a
/// bitfield that is not there.
uint32_t maskOf(RegisterMap::Register const& reg, char const* bitfield) {
    if (!bitfield || *bitfield == '\0')
        return 0xFFFFFFFF;
    vy_BitfieldDescription const* const found = RegisterMap::findBitfield(reg, bitfield);
    return found ? found->mask : 0;
}

RegisterMap::Register* findDescribed(vy_Camera* camera, vy_RegisterDescription const& description) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open ? open->registers.find(description.addressSpace, description.id, description.address)
                : nullptr;
}

// Behind a transient description lies a device on the serial bus.
bool isOnBus(vy_Camera* camera, vy_RegisterDescription const& description) {
    return vy_Camera::opened(camera) && !description.name && description.addressSpace == kSerialBusSpace;
}

} // namespace

VEYRA2_FUNCTION int vy_ExistsRegister(vy_Camera* camera, char const* reg) {
    return findByName(camera, reg) ? 1 : 0;
}

VEYRA2_FUNCTION int vy_ExistsBitfield(vy_Camera* camera, char const* reg, char const* bitfield) {
    return vy_FindBitfield(camera, reg, bitfield) ? 1 : 0;
}

VEYRA2_FUNCTION vy_RegisterDescription const* vy_FindRegister(vy_Camera* camera, char const* reg) {
    RegisterMap::Register const* const found = findByName(camera, reg);
    return found ? &found->description : nullptr;
}

VEYRA2_FUNCTION vy_BitfieldDescription const* vy_FindBitfield(vy_Camera* camera, char const* reg,
                                                              char const* bitfield) {
    RegisterMap::Register const* const found = findByName(camera, reg);
    return found && bitfield ? RegisterMap::findBitfield(*found, bitfield) : nullptr;
}

VEYRA2_FUNCTION vy_RegisterDescription const* vy_FindRegisterAddr(vy_Camera* camera, uint32_t address,
                                                                  uint32_t addressSpace, uint32_t selector) {
    vy_Camera* const open = vy_Camera::opened(camera);
    RegisterMap::Register const* const found =
        open ? open->registers.find(addressSpace, selector, address) : nullptr;
    return found ? &found->description : nullptr;
}

VEYRA2_FUNCTION uint32_t vy_dataSize(uint32_t dataType) {
    return simulator::dataTypeSize(dataType);
}

VEYRA2_FUNCTION int vy_ReadSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                        uint32_t* value) {
    if (!value)
        return simulator::kBadArgument;
    RegisterMap::Register* const found = findByName(camera, reg);
    if (!found)
        return simulator::kNoSuchRegister;
    uint32_t const mask = maskOf(*found, bitfield);
    if (mask == 0)
        return simulator::kNoSuchBitfield;
    *value = camera->read(*found, mask);
    return simulator::kDone;
}

VEYRA2_FUNCTION int vy_WriteSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                         uint32_t value) {
    RegisterMap::Register* const found = findByName(camera, reg);
    if (!found)
        return simulator::kNoSuchRegister;
    uint32_t const mask = maskOf(*found, bitfield);
    if (mask == 0)
        return simulator::kNoSuchBitfield;
    return camera->write(*found, value, mask);
}

VEYRA2_FUNCTION int vy_ReadSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t* value) {
    if (!reg || !value)
        return simulator::kBadArgument;
    RegisterMap::Register* const found = findDescribed(camera, *reg);
    if (!found)
        return isOnBus(camera, *reg) ? camera->bus.readDescribed(*reg, *value) : simulator::kNoSuchRegister;
    *value = camera->read(*found);
    return simulator::kDone;
}

VEYRA2_FUNCTION int vy_WriteSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t value) {
    if (!reg)
        return simulator::kBadArgument;
    RegisterMap::Register* const found = findDescribed(camera, *reg);
    if (!found)
        return isOnBus(camera, *reg) ? camera->bus.writeDescribed(*reg, value) : simulator::kNoSuchRegister;
    return camera->write(*found, value);
}

VEYRA2_FUNCTION int vy_readRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                     uint32_t* words) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open && words ? open->bus.readRaw(busAddress, start, {words, count}) : simulator::kBadArgument;
}

VEYRA2_FUNCTION int vy_writeRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                      uint32_t const* words) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open && words ? open->bus.writeRaw(busAddress, start, {words, count}) : simulator::kBadArgument;
}

VEYRA2_FUNCTION int vy_setMode(vy_Camera* camera, uint32_t mode, uint32_t value) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open ? open->bus.setMode(mode, value) : simulator::kBadArgument;
}

VEYRA2_FUNCTION void vy_InvalidateRegCache(vy_Camera* camera) {
    if (vy_Camera* const open = vy_Camera::opened(camera))
        open->registers.dropCache();
}

VEYRA2_FUNCTION int vy_IsSOC(vy_Camera* camera) {
    vy_Camera const* const open = vy_Camera::opened(camera);
    return open && open->systemOnChip ? 1 : 0;
}

VEYRA2_FUNCTION char const* vy_Home(void) {
    static QByteArray const home = QFile::encodeName(simulator::libraryFolder());
    return home.constData();
}

VEYRA2_FUNCTION int vy_stopTransport(vy_Camera* camera) {
    return vy_Camera::opened(camera) ? simulator::kDone : simulator::kBadArgument;
}

// A camera lives as long as the host's object; a borrower of the handle cannot end it.
VEYRA2_FUNCTION void vy_CloseCameras(void) {}

VEYRA2_FUNCTION vy_SensorDescription const* vy_SensorInfo(vy_Camera* camera) {
    vy_Camera const* const open = vy_Camera::opened(camera);
    return open ? &open->description : nullptr;
}
