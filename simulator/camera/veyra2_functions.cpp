#include "simulator/boundary/call_text.h"
#include "simulator/boundary/observed_call.h"
#include "simulator/camera/camera_handle.h"
#include "simulator/camera/installed_files.h"
#include "simulator/camera/register_map.h"
#include "simulator/camera/simulated_camera.h"

#include "published/veyra2.h"

#include <QFile>

// The library's functions over the simulated camera. A null or closed camera, a null name and a register that
// the sensor lacks are answered, never followed.

#ifdef _MSC_VER
// Declared without an export, no definition may have one there; the linker exports all.
#define VEYRA2_FUNCTION extern "C"
#else
#define VEYRA2_FUNCTION extern "C" SIMULATED_CAMERA_API
#endif

namespace {
using simulator::callText;
using simulator::callTexts;
using simulator::observed;
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

// What an observer reads of arguments and results. The camera is named only when it is not open.

template <typename... Arguments>
QByteArray textOf(vy_Camera* camera, Arguments const&... arguments) {
    QByteArray const text = callTexts(arguments...);
    return vy_Camera::opened(camera) ? text : "no-open-camera " + text;
}

QByteArray descriptionText(vy_RegisterDescription const* reg) {
    if (!reg || reg->name)
        return reg ? callText(reg->name) : QByteArrayLiteral("null");
    return '{' + callTexts(reg->addressSpace, reg->id, reg->address, reg->addressWidth, reg->dataWidth) +
           " x " + callText(reg->accessSize) + '}';
}

auto storedIn(uint32_t const* value) {
    return [value](int result) {
        QByteArray const text = callText(result);
        return result == simulator::kDone ? text + ", " + callText(*value) : text;
    };
}

// One group of digits for all bytes of a call; whatever a word holds above its byte is shown, too.
QByteArray wordsText(uint32_t const* words, uint32_t count) {
    if (!words)
        return QByteArrayLiteral("null");
    QByteArray text;
    for (uint32_t i = 0; i < count; ++i)
        text += QByteArray::number(words[i], 16).rightJustified(2, '0');
    return '[' + text + ']';
}

QByteArray infoText(vy_SensorDescription const* info) {
    return info ? callTexts(info->sensorKind, info->variant, info->name) + ' ' +
                      QByteArray::number(info->imageWidth) + 'x' + QByteArray::number(info->imageHeight)
                : QByteArrayLiteral("null");
}

QByteArray foundText(void const* description) {
    return description ? QByteArrayLiteral("found") : QByteArrayLiteral("null");
}
} // namespace

VEYRA2_FUNCTION void vy_ObserveCalls(CallObserver const* observer) {
    simulator::callWatch.observer = observer;
}

VEYRA2_FUNCTION int vy_ExistsRegister(vy_Camera* camera, char const* reg) {
    return observed(
        "vy_ExistsRegister", [&] { return textOf(camera, reg); },
        [&] { return findByName(camera, reg) ? 1 : 0; });
}

VEYRA2_FUNCTION int vy_ExistsBitfield(vy_Camera* camera, char const* reg, char const* bitfield) {
    return observed(
        "vy_ExistsBitfield", [&] { return textOf(camera, reg, bitfield); },
        [&] {
            return vy_FindBitfield(camera, reg, bitfield) ? 1 : 0; // not told: it is the library's own
        });
}

VEYRA2_FUNCTION vy_RegisterDescription const* vy_FindRegister(vy_Camera* camera, char const* reg) {
    return observed(
        "vy_FindRegister", [&] { return textOf(camera, reg); }, foundText,
        [&]() -> vy_RegisterDescription const* {
            RegisterMap::Register const* const found = findByName(camera, reg);
            return found ? &found->description : nullptr;
        });
}

VEYRA2_FUNCTION vy_BitfieldDescription const* vy_FindBitfield(vy_Camera* camera, char const* reg,
                                                              char const* bitfield) {
    return observed(
        "vy_FindBitfield", [&] { return textOf(camera, reg, bitfield); }, foundText,
        [&]() -> vy_BitfieldDescription const* {
            RegisterMap::Register const* const found = findByName(camera, reg);
            return found && bitfield ? RegisterMap::findBitfield(*found, bitfield) : nullptr;
        });
}

VEYRA2_FUNCTION vy_RegisterDescription const* vy_FindRegisterAddr(vy_Camera* camera, uint32_t address,
                                                                  uint32_t addressSpace, uint32_t selector) {
    return observed(
        "vy_FindRegisterAddr", [&] { return textOf(camera, address, addressSpace, selector); },
        descriptionText,
        [&]() -> vy_RegisterDescription const* {
            vy_Camera* const open = vy_Camera::opened(camera);
            RegisterMap::Register const* const found =
                open ? open->registers.find(addressSpace, selector, address) : nullptr;
            return found ? &found->description : nullptr;
        });
}

VEYRA2_FUNCTION uint32_t vy_dataSize(uint32_t dataType) {
    return observed(
        "vy_dataSize", [&] { return callText(dataType); }, [&] { return simulator::dataTypeSize(dataType); });
}

VEYRA2_FUNCTION int vy_ReadSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                        uint32_t* value) {
    return observed(
        "vy_ReadSensorRegStr", [&] { return textOf(camera, reg, bitfield); }, storedIn(value),
        [&]() -> int {
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
        });
}

VEYRA2_FUNCTION int vy_WriteSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                         uint32_t value) {
    return observed(
        "vy_WriteSensorRegStr", [&] { return textOf(camera, reg, bitfield, value); },
        [&]() -> int {
            RegisterMap::Register* const found = findByName(camera, reg);
            if (!found)
                return simulator::kNoSuchRegister;
            uint32_t const mask = maskOf(*found, bitfield);
            if (mask == 0)
                return simulator::kNoSuchBitfield;
            return camera->write(*found, value, mask);
        });
}

VEYRA2_FUNCTION int vy_ReadSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t* value) {
    return observed(
        "vy_ReadSensorReg", [&] { return textOf(camera) + descriptionText(reg); }, storedIn(value),
        [&]() -> int {
            if (!reg || !value)
                return simulator::kBadArgument;
            RegisterMap::Register* const found = findDescribed(camera, *reg);
            if (!found)
                return isOnBus(camera, *reg) ? camera->bus.readDescribed(*reg, *value)
                                             : simulator::kNoSuchRegister;
            *value = camera->read(*found);
            return simulator::kDone;
        });
}

VEYRA2_FUNCTION int vy_WriteSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t value) {
    return observed(
        "vy_WriteSensorReg", [&] { return textOf(camera) + descriptionText(reg) + ' ' + callText(value); },
        [&]() -> int {
            if (!reg)
                return simulator::kBadArgument;
            RegisterMap::Register* const found = findDescribed(camera, *reg);
            if (!found)
                return isOnBus(camera, *reg) ? camera->bus.writeDescribed(*reg, value)
                                             : simulator::kNoSuchRegister;
            return camera->write(*found, value);
        });
}

VEYRA2_FUNCTION int vy_readRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                     uint32_t* words) {
    return observed(
        "vy_readRegisters", [&] { return textOf(camera, busAddress, start, count); },
        [&](int result) {
            return result == simulator::kDone ? callText(result) + ", " + wordsText(words, count)
                                              : callText(result);
        },
        [&] {
            vy_Camera* const open = vy_Camera::opened(camera);
            return open && words ? open->bus.readRaw(busAddress, start, {words, count})
                                 : simulator::kBadArgument;
        });
}

VEYRA2_FUNCTION int vy_writeRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                      uint32_t const* words) {
    return observed(
        "vy_writeRegisters",
        [&] { return textOf(camera, busAddress, start) + ' ' + wordsText(words, count); },
        [&] {
            vy_Camera* const open = vy_Camera::opened(camera);
            return open && words ? open->bus.writeRaw(busAddress, start, {words, count})
                                 : simulator::kBadArgument;
        });
}

VEYRA2_FUNCTION int vy_setMode(vy_Camera* camera, uint32_t mode, uint32_t value) {
    return observed(
        "vy_setMode", [&] { return textOf(camera, mode, value); },
        [&] {
            vy_Camera* const open = vy_Camera::opened(camera);
            return open ? open->bus.setMode(mode, value) : simulator::kBadArgument;
        });
}

VEYRA2_FUNCTION void vy_InvalidateRegCache(vy_Camera* camera) {
    observed(
        "vy_InvalidateRegCache", [&] { return textOf(camera); },
        [&] {
            if (vy_Camera* const open = vy_Camera::opened(camera))
                open->registers.dropCache();
        });
}

VEYRA2_FUNCTION int vy_IsSOC(vy_Camera* camera) {
    return observed(
        "vy_IsSOC", [&] { return textOf(camera); },
        [&] {
            vy_Camera const* const open = vy_Camera::opened(camera);
            return open && open->systemOnChip ? 1 : 0;
        });
}

VEYRA2_FUNCTION char const* vy_Home(void) {
    return observed(
        "vy_Home", [&] { return QByteArray(); },
        [&]() -> char const* {
            static QByteArray const home = QFile::encodeName(simulator::libraryFolder());
            return home.constData();
        });
}

VEYRA2_FUNCTION int vy_stopTransport(vy_Camera* camera) {
    return observed(
        "vy_stopTransport", [&] { return textOf(camera); },
        [&] { return vy_Camera::opened(camera) ? simulator::kDone : simulator::kBadArgument; });
}

// A camera lives as long as the host's object; a borrower of the handle cannot end it.
VEYRA2_FUNCTION void vy_CloseCameras(void) {}

VEYRA2_FUNCTION vy_SensorDescription const* vy_SensorInfo(vy_Camera* camera) {
    return observed(
        "vy_SensorInfo", [&] { return textOf(camera); }, infoText,
        [&]() -> vy_SensorDescription const* {
            vy_Camera const* const open = vy_Camera::opened(camera);
            return open ? &open->description : nullptr;
        });
}
