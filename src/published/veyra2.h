#pragma once

// Published interface of the sensor-access library `veyra2`: plain C, natural alignment, 8-bit
// zero-terminated strings. Functions that return int answer 0 for success, 12 when the addressed device does
// not answer, and any other value for a failure, unless told otherwise.

#include <cstddef>
#include <cstdint>

extern "C" {

/// Opaque camera handle; the library issues it to the host.
struct vy_Camera;

/// What the library knows of a camera's open sensor. Valid until the next call on that camera.
struct vy_SensorDescription {
    uint32_t recordSize;           ///< size of this record in bytes, 56
    uint32_t sensorKind;           ///< sensor-kind code
    uint32_t variant;              ///< generation within the kind
    uint32_t registerAddressWidth; ///< bits
    uint32_t registerDataWidth;    ///< bits
    uint32_t hasPageSelect;        ///< non-zero: registers are addressed by page and address
    uint32_t secondaryMaps;        ///< bit k: the secondary register map of address-space kind k is present
    uint32_t imageWidth;           ///< pixels, current image
    uint32_t imageHeight;          ///< pixels, current image
    uint32_t reserved;
    char const* name;       ///< 8-bit part name
    void const* sensorData; ///< data block for sf_Create2
};

/// One register of the sensor's map. A transient description has a null name.
struct vy_RegisterDescription {
    char const* name;
    uint32_t addressSpace; ///< address-space kind
    uint32_t id;           ///< page, driver, or serial-bus device address
    uint32_t address;
    uint32_t addressWidth; ///< bits
    uint32_t dataWidth;    ///< bits
    uint32_t accessSize;   ///< bytes per access
    uint32_t dataType;     ///< code for vy_dataSize
    uint32_t reserved;
};

/// One bitfield of a register.
struct vy_BitfieldDescription {
    char const* name;
    uint32_t mask;
    uint32_t reserved;
};

/// Non-zero when the sensor's map holds the register, or the register that bitfield.
int vy_ExistsRegister(vy_Camera* camera, char const* reg);
int vy_ExistsBitfield(vy_Camera* camera, char const* reg, char const* bitfield);

/// The description, owned by the library, or null.
vy_RegisterDescription const* vy_FindRegister(vy_Camera* camera, char const* reg);
vy_BitfieldDescription const* vy_FindBitfield(vy_Camera* camera, char const* reg, char const* bitfield);
vy_RegisterDescription const* vy_FindRegisterAddr(vy_Camera* camera, uint32_t address, uint32_t addressSpace,
                                                  uint32_t selector);

/// Size in bytes of a register description's data type.
uint32_t vy_dataSize(uint32_t dataType);

/// Register or bitfield by name; an empty bitfield name means the whole register.
int vy_ReadSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield, uint32_t* value);
int vy_WriteSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield, uint32_t value);

/// Register by description, also by a transient one.
int vy_ReadSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t* value);
int vy_WriteSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t value);

/// Raw serial-bus transfer of `count` bytes from `start` on, one byte per 32-bit word.
int vy_readRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count, uint32_t* words);
int vy_writeRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                      uint32_t const* words);

/// Switches the transport into a mode.
int vy_setMode(vy_Camera* camera, uint32_t mode, uint32_t value);

/// Drops cached register values, so that the next read goes to the sensor.
void vy_InvalidateRegCache(vy_Camera* camera);

/// Non-zero for a system-on-chip sensor.
int vy_IsSOC(vy_Camera* camera);

/// The installation's root directory; may be null or empty.
char const* vy_Home(void);

int vy_stopTransport(vy_Camera* camera);
void vy_CloseCameras(void);

/// Null: the camera has no sensor description.
vy_SensorDescription const* vy_SensorInfo(vy_Camera* camera);

} // extern "C"

static_assert(sizeof(vy_SensorDescription) == 56);
static_assert(offsetof(vy_SensorDescription, imageWidth) == 28);
static_assert(offsetof(vy_SensorDescription, name) == 40);
static_assert(offsetof(vy_SensorDescription, sensorData) == 48);
static_assert(sizeof(vy_RegisterDescription) == 40);
static_assert(offsetof(vy_RegisterDescription, addressSpace) == 8);
static_assert(offsetof(vy_RegisterDescription, dataType) == 32);
static_assert(sizeof(vy_BitfieldDescription) == 16);
static_assert(offsetof(vy_BitfieldDescription, mask) == 8);
