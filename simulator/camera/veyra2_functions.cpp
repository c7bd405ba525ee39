#include "simulator/boundary/observed_call.h"
#include "simulator/camera/headboard_bus.h"
#include "simulator/camera/simulated_camera.h"
#include "simulator/files/whole_file.h"

#include "published/veyra2.h"

#include <QFile>
#include <algorithm>
#include <utility>
#include <vector>

// The library's functions over the simulated camera. A null or closed camera, a null name and a register that
// the sensor lacks are answered, never followed.

using namespace simulator;

// Cameras are opened and used on one thread, the host's.
static std::vector<vy_Camera*> openCameras;

vy_Camera::vy_Camera(Profile& sensor) : profile(sensor) { openCameras.push_back(this); }

vy_Camera::~vy_Camera() { std::erase(openCameras, this); }

uint32_t vy_Camera::read(RegisterMap::Register& reg, uint32_t mask) {
    bridge.refresh();
    return RegisterMap::read(reg, mask);
}

int vy_Camera::write(RegisterMap::Register& reg, uint32_t value, uint32_t mask) {
    bridge.refresh();
    profile.registers.write(reg, value, mask);
    return bridge.written(reg);
}

bool vy_Camera::isOpen(vy_Camera const* camera) {
    return std::find(openCameras.begin(), openCameras.end(), camera) != openCameras.end();
}

// What an observer reads of arguments and results.

// Named only when it is not open.
static QByteArray callText(vy_Camera* camera) {
    return vy_Camera::isOpen(camera) ? QByteArray() : QByteArrayLiteral("no-open-camera");
}

static QByteArray callText(vy_RegisterDescription const* reg) {
    if (!reg || reg->name)
        return reg ? callText(reg->name) : QByteArrayLiteral("null");
    return '{' + callTexts(reg->addressSpace, reg->id, reg->address, reg->addressWidth, reg->dataWidth) +
           " x " + callText(reg->accessSize) + '}';
}

static QByteArray callText(vy_SensorDescription const* info) {
    return info ? callTexts(info->sensorKind, info->variant, info->name) + ' ' +
                      QByteArray::number(info->imageWidth) + 'x' + QByteArray::number(info->imageHeight)
                : QByteArrayLiteral("null");
}

namespace {
using simulator::callText; // besides the one below

// One group of digits for all bytes of a call; whatever a word holds above its byte is shown, too.
struct Words {
    uint32_t const* words;
    uint32_t count;
};

QByteArray callText(Words const& transfer) {
    if (!transfer.words)
        return QByteArrayLiteral("null");
    QByteArray text;
    for (uint32_t i = 0; i < transfer.count; ++i)
        text += QByteArray::number(transfer.words[i], 16).rightJustified(2, '0');
    return '[' + text + ']';
}

QByteArray foundText(void const* description) {
    return description ? QByteArrayLiteral("found") : QByteArrayLiteral("null");
}

/// The status and, after a success, what was stored for the caller.
template <typename Stored>
auto statusAnd(Stored stored) {
    return [=](int status) {
        QByteArray const text = callText(status);
        return status == kDone ? text + ", " + callText(stored()) : text;
    };
}

RegisterMap::Register* findByName(vy_Camera* camera, char const* reg) {
    return vy_Camera::isOpen(camera) && reg ? camera->profile.registers.find(reg) : nullptr;
}

RegisterMap::Register* findByAddress(vy_Camera* camera, uint32_t addressSpace, uint32_t id,
                                     uint32_t address) {
    return vy_Camera::isOpen(camera) ? camera->profile.registers.find(addressSpace, id, address) : nullptr;
}

vy_RegisterDescription const* descriptionOf(RegisterMap::Register const* reg) {
    return reg ? &reg->description : nullptr;
}

vy_BitfieldDescription const* findBitfield(vy_Camera* camera, char const* reg, char const* bitfield) {
    RegisterMap::Register const* const found = findByName(camera, reg);
    return found && bitfield ? RegisterMap::findBitfield(*found, bitfield) : nullptr;
}

/// Transfers the bits that a bitfield name stands for; an empty or null name stands for the whole register.
template <typename Transfer>
int withBits(vy_Camera* camera, char const* reg, char const* bitfield, Transfer transfer) {
    RegisterMap::Register* const found = findByName(camera, reg);
    if (!found)
        return kNoSuchRegister;
    if (!bitfield || *bitfield == '\0')
        return transfer(*found, 0xFFFFFFFF);
    vy_BitfieldDescription const* const bits = RegisterMap::findBitfield(*found, bitfield);
    return bits ? transfer(*found, bits->mask) : kNoSuchBitfield;
}

/// Transfers what is described: a register or, behind a transient description, a device on the serial bus.
template <typename OfRegister, typename OfDevice>
int withDescribed(vy_Camera* camera, vy_RegisterDescription const& told, OfRegister ofRegister,
                  OfDevice ofDevice) {
    constexpr uint32_t kSerialBusSpace = 1; // of a transient description
    if (auto* const found = findByAddress(camera, told.addressSpace, told.id, told.address))
        return ofRegister(*found);
    bool const isTransient = !told.name && told.addressSpace == kSerialBusSpace;
    return vy_Camera::isOpen(camera) && isTransient ? ofDevice() : kNoSuchRegister;
}
} // namespace

LIBRARY_FUNCTION void vy_ObserveCalls(CallObserver const* observer) { libraryWatch.observer = observer; }

LIBRARY_FUNCTION int vy_ExistsRegister(vy_Camera* camera, char const* reg) {
    return observed(Call(__func__, camera, reg), [&] { return findByName(camera, reg) ? 1 : 0; });
}

LIBRARY_FUNCTION int vy_ExistsBitfield(vy_Camera* camera, char const* reg, char const* bitfield) {
    return observed(Call(__func__, camera, reg, bitfield),
                    [&] { return findBitfield(camera, reg, bitfield) ? 1 : 0; });
}

LIBRARY_FUNCTION vy_RegisterDescription const* vy_FindRegister(vy_Camera* camera, char const* reg) {
    return observed(
        Call(__func__, camera, reg), [&] { return descriptionOf(findByName(camera, reg)); }, foundText);
}

LIBRARY_FUNCTION vy_BitfieldDescription const* vy_FindBitfield(vy_Camera* camera, char const* reg,
                                                               char const* bitfield) {
    return observed(
        Call(__func__, camera, reg, bitfield), [&] { return findBitfield(camera, reg, bitfield); },
        foundText);
}

LIBRARY_FUNCTION vy_RegisterDescription const* vy_FindRegisterAddr(vy_Camera* camera, uint32_t address,
                                                                   uint32_t addressSpace, uint32_t selector) {
    return observed(Call(__func__, camera, address, addressSpace, selector),
                    [&] { return descriptionOf(findByAddress(camera, addressSpace, selector, address)); });
}

LIBRARY_FUNCTION uint32_t vy_dataSize(uint32_t dataType) {
    return observed(Call(__func__, dataType), [&] { return dataTypeSize(dataType); });
}

LIBRARY_FUNCTION int vy_ReadSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                         uint32_t* value) {
    auto const read = [&](RegisterMap::Register& found, uint32_t mask) {
        *value = camera->read(found, mask);
        return int(kDone);
    };
    return observed(
        Call(__func__, camera, reg, bitfield),
        [&] { return value ? withBits(camera, reg, bitfield, read) : kBadArgument; },
        statusAnd([=] { return *value; }));
}

LIBRARY_FUNCTION int vy_WriteSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                          uint32_t value) {
    auto const write = [&](RegisterMap::Register& found, uint32_t mask) {
        return camera->write(found, value, mask);
    };
    return observed(Call(__func__, camera, reg, bitfield, value),
                    [&] { return withBits(camera, reg, bitfield, write); });
}

LIBRARY_FUNCTION int vy_ReadSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t* value) {
    auto const read = [&](RegisterMap::Register& found) {
        *value = camera->read(found);
        return int(kDone);
    };
    auto const readDevice = [&] { return camera->bus.readDescribed(*reg, *value); };
    return observed(
        Call(__func__, camera, reg),
        [&] { return reg && value ? withDescribed(camera, *reg, read, readDevice) : kBadArgument; },
        statusAnd([=] { return *value; }));
}

LIBRARY_FUNCTION int vy_WriteSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t value) {
    auto const write = [&](RegisterMap::Register& found) { return camera->write(found, value); };
    auto const writeDevice = [&] { return camera->bus.writeDescribed(*reg, value); };
    return observed(Call(__func__, camera, reg, value),
                    [&] { return reg ? withDescribed(camera, *reg, write, writeDevice) : kBadArgument; });
}

LIBRARY_FUNCTION int vy_readRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                      uint32_t* words) {
    Words const transfer{words, count};
    return observed(
        Call(__func__, camera, busAddress, start, count),
        [&] {
            return vy_Camera::isOpen(camera) && words ? camera->bus.readRaw(busAddress, start, {words, count})
                                                      : kBadArgument;
        },
        statusAnd([=] { return transfer; }));
}

LIBRARY_FUNCTION int vy_writeRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                       uint32_t const* words) {
    return observed(Call(__func__, camera, busAddress, start, Words{words, count}), [&] {
        return vy_Camera::isOpen(camera) && words ? camera->bus.writeRaw(busAddress, start, {words, count})
                                                  : kBadArgument;
    });
}

LIBRARY_FUNCTION int vy_setMode(vy_Camera* camera, uint32_t mode, uint32_t value) {
    return observed(Call(__func__, camera, mode, value), [&] {
        return vy_Camera::isOpen(camera) ? camera->bus.setMode(mode, value) : kBadArgument;
    });
}

LIBRARY_FUNCTION void vy_InvalidateRegCache(vy_Camera* camera) {
    observed(Call(__func__, camera), [&] {
        if (vy_Camera::isOpen(camera))
            camera->profile.registers.dropCache();
    });
}

LIBRARY_FUNCTION int vy_IsSOC(vy_Camera* camera) {
    return observed(Call(__func__, camera), [&] {
        return vy_Camera::isOpen(camera) && camera->profile.description.systemOnChip ? 1 : 0;
    });
}

LIBRARY_FUNCTION char const* vy_Home(void) {
    return observed(Call(__func__), []() -> char const* {
        static QByteArray const home = QFile::encodeName(files::libraryFolder());
        return home.constData();
    });
}

LIBRARY_FUNCTION int vy_stopTransport(vy_Camera* camera) {
    return observed(Call(__func__, camera),
                    [&] { return int(vy_Camera::isOpen(camera) ? kDone : kBadArgument); });
}

// A camera lives as long as the host's object; a borrower of the handle cannot end it.
LIBRARY_FUNCTION void vy_CloseCameras(void) {
    observed(Call(__func__), [] {});
}

LIBRARY_FUNCTION vy_SensorDescription const* vy_SensorInfo(vy_Camera* camera) {
    return observed(Call(__func__, camera), [&] {
        return vy_Camera::isOpen(camera) ? &std::as_const(camera->profile.sensor) : nullptr;
    });
}
