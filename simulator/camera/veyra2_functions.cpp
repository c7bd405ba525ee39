#include "simulator/boundary/observed_call.h"
#include "simulator/camera/camera_handle.h"
#include "simulator/camera/register_map.h"
#include "simulator/files/whole_file.h"

#include "published/veyra2.h"

#include <QFile>

// The library's functions over the simulated camera. A null or closed camera, a null name and a register that
// the sensor lacks are answered, never followed.

using simulator::Call;
using simulator::callText;
using simulator::callTexts;
using simulator::libraryWatch;
using simulator::observed;
using simulator::RegisterMap;

// What an observer reads of arguments and results.

// Named only when it is not open.
static QByteArray callText(vy_Camera* camera) {
    return vy_Camera::opened(camera) ? QByteArray() : QByteArrayLiteral("no-open-camera");
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
        return status == simulator::kDone ? text + ", " + callText(stored()) : text;
    };
}

/// What an open camera answers; `absent` for any other.
template <typename Result, typename Answer>
Result ifOpen(vy_Camera* camera, Result absent, Answer answer) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open ? answer(*open) : absent;
}

RegisterMap::Register* findByName(vy_Camera* camera, char const* reg) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open && reg ? open->registers.find(reg) : nullptr;
}

RegisterMap::Register* findByAddress(vy_Camera* camera, uint32_t addressSpace, uint32_t id,
                                     uint32_t address) {
    vy_Camera* const open = vy_Camera::opened(camera);
    return open ? open->registers.find(addressSpace, id, address) : nullptr;
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
        return simulator::kNoSuchRegister;
    if (!bitfield || *bitfield == '\0')
        return transfer(*found, 0xFFFFFFFF);
    vy_BitfieldDescription const* const bits = RegisterMap::findBitfield(*found, bitfield);
    return bits ? transfer(*found, bits->mask) : simulator::kNoSuchBitfield;
}

/// Transfers what is described: a register or, behind a transient description, a device on the serial bus.
template <typename OfRegister, typename OfDevice>
int withDescribed(vy_Camera* camera, vy_RegisterDescription const& description, OfRegister ofRegister,
                  OfDevice ofDevice) {
    constexpr uint32_t kSerialBusSpace = 1; // of a transient description
    if (auto* const found =
            findByAddress(camera, description.addressSpace, description.id, description.address))
        return ofRegister(*found);
    return vy_Camera::opened(camera) && !description.name && description.addressSpace == kSerialBusSpace
               ? ofDevice()
               : simulator::kNoSuchRegister;
}
} // namespace

LIBRARY_FUNCTION void vy_ObserveCalls(CallObserver const* observer) { libraryWatch.setObserver(observer); }

LIBRARY_FUNCTION int vy_ExistsRegister(vy_Camera* camera, char const* reg) {
    return observed(Call("vy_ExistsRegister", camera, reg), [&] { return findByName(camera, reg) ? 1 : 0; });
}

LIBRARY_FUNCTION int vy_ExistsBitfield(vy_Camera* camera, char const* reg, char const* bitfield) {
    return observed(Call("vy_ExistsBitfield", camera, reg, bitfield),
                    [&] { return findBitfield(camera, reg, bitfield) ? 1 : 0; });
}

LIBRARY_FUNCTION vy_RegisterDescription const* vy_FindRegister(vy_Camera* camera, char const* reg) {
    auto const find = [&]() -> vy_RegisterDescription const* {
        RegisterMap::Register const* const found = findByName(camera, reg);
        return found ? &found->description : nullptr;
    };
    return observed(Call("vy_FindRegister", camera, reg), find, foundText);
}

LIBRARY_FUNCTION vy_BitfieldDescription const* vy_FindBitfield(vy_Camera* camera, char const* reg,
                                                               char const* bitfield) {
    return observed(
        Call("vy_FindBitfield", camera, reg, bitfield), [&] { return findBitfield(camera, reg, bitfield); },
        foundText);
}

LIBRARY_FUNCTION vy_RegisterDescription const* vy_FindRegisterAddr(vy_Camera* camera, uint32_t address,
                                                                   uint32_t addressSpace, uint32_t selector) {
    return observed(Call("vy_FindRegisterAddr", camera, address, addressSpace, selector),
                    [&]() -> vy_RegisterDescription const* {
                        auto const* const found = findByAddress(camera, addressSpace, selector, address);
                        return found ? &found->description : nullptr;
                    });
}

LIBRARY_FUNCTION uint32_t vy_dataSize(uint32_t dataType) {
    return observed(Call("vy_dataSize", dataType), [&] { return simulator::dataTypeSize(dataType); });
}

LIBRARY_FUNCTION int vy_ReadSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                         uint32_t* value) {
    auto const read = [&](RegisterMap::Register& found, uint32_t mask) {
        *value = camera->read(found, mask);
        return int(simulator::kDone);
    };
    return observed(
        Call("vy_ReadSensorRegStr", camera, reg, bitfield),
        [&] { return value ? withBits(camera, reg, bitfield, read) : simulator::kBadArgument; },
        statusAnd([=] { return *value; }));
}

LIBRARY_FUNCTION int vy_WriteSensorRegStr(vy_Camera* camera, char const* reg, char const* bitfield,
                                          uint32_t value) {
    auto const write = [&](RegisterMap::Register& found, uint32_t mask) {
        return camera->write(found, value, mask);
    };
    return observed(Call("vy_WriteSensorRegStr", camera, reg, bitfield, value),
                    [&] { return withBits(camera, reg, bitfield, write); });
}

LIBRARY_FUNCTION int vy_ReadSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t* value) {
    auto const read = [&](RegisterMap::Register& found) {
        *value = camera->read(found);
        return int(simulator::kDone);
    };
    auto const readDevice = [&] { return camera->bus.readDescribed(*reg, *value); };
    return observed(
        Call("vy_ReadSensorReg", camera, reg),
        [&] {
            return reg && value ? withDescribed(camera, *reg, read, readDevice) : simulator::kBadArgument;
        },
        statusAnd([=] { return *value; }));
}

LIBRARY_FUNCTION int vy_WriteSensorReg(vy_Camera* camera, vy_RegisterDescription const* reg, uint32_t value) {
    auto const write = [&](RegisterMap::Register& found) { return camera->write(found, value); };
    auto const writeDevice = [&] { return camera->bus.writeDescribed(*reg, value); };
    return observed(Call("vy_WriteSensorReg", camera, reg, value), [&] {
        return reg ? withDescribed(camera, *reg, write, writeDevice) : simulator::kBadArgument;
    });
}

LIBRARY_FUNCTION int vy_readRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                      uint32_t* words) {
    return observed(
        Call("vy_readRegisters", camera, busAddress, start, count),
        [&] {
            return ifOpen(camera, int(simulator::kBadArgument), [&](vy_Camera& open) {
                return words ? open.bus.readRaw(busAddress, start, {words, count}) : simulator::kBadArgument;
            });
        },
        statusAnd([=] {
            return Words{words, count};
        }));
}

LIBRARY_FUNCTION int vy_writeRegisters(vy_Camera* camera, uint32_t busAddress, uint32_t start, uint32_t count,
                                       uint32_t const* words) {
    return observed(Call("vy_writeRegisters", camera, busAddress, start, Words{words, count}), [&] {
        return ifOpen(camera, int(simulator::kBadArgument), [&](vy_Camera& open) {
            return words ? open.bus.writeRaw(busAddress, start, {words, count}) : simulator::kBadArgument;
        });
    });
}

LIBRARY_FUNCTION int vy_setMode(vy_Camera* camera, uint32_t mode, uint32_t value) {
    return observed(Call("vy_setMode", camera, mode, value), [&] {
        return ifOpen(camera, int(simulator::kBadArgument),
                      [&](vy_Camera& open) { return open.bus.setMode(mode, value); });
    });
}

LIBRARY_FUNCTION void vy_InvalidateRegCache(vy_Camera* camera) {
    observed(Call("vy_InvalidateRegCache", camera), [&] {
        if (vy_Camera* const open = vy_Camera::opened(camera))
            open->registers.dropCache();
    });
}

LIBRARY_FUNCTION int vy_IsSOC(vy_Camera* camera) {
    return observed(Call("vy_IsSOC", camera), [&] {
        return ifOpen(camera, 0, [](vy_Camera const& open) { return open.systemOnChip ? 1 : 0; });
    });
}

LIBRARY_FUNCTION char const* vy_Home(void) {
    return observed(Call("vy_Home"), []() -> char const* {
        static QByteArray const home = QFile::encodeName(files::libraryFolder());
        return home.constData();
    });
}

LIBRARY_FUNCTION int vy_stopTransport(vy_Camera* camera) {
    return observed(Call("vy_stopTransport", camera), [&]() -> int {
        return vy_Camera::opened(camera) ? simulator::kDone : simulator::kBadArgument;
    });
}

// A camera lives as long as the host's object; a borrower of the handle cannot end it.
LIBRARY_FUNCTION void vy_CloseCameras(void) {}

LIBRARY_FUNCTION vy_SensorDescription const* vy_SensorInfo(vy_Camera* camera) {
    return observed(Call("vy_SensorInfo", camera), [&]() -> vy_SensorDescription const* {
        vy_Camera const* const open = vy_Camera::opened(camera);
        return open ? &open->description : nullptr;
    });
}
