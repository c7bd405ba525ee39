#include "headboard/headboard_eeprom.h"

#include "headboard/eeprom_transport.h"
#include "headboard/record_format.h"

#include <algorithm>
#include <utility>

namespace kestra {
namespace {
constexpr int32_t kSmallestImage = 8;
constexpr int kLibraryNoAnswer = 12;

bool isInside(HeadboardEeprom& eeprom, int64_t offset, int64_t count) {
    int64_t const size = eeprom.imageSize();
    return offset >= 0 && count >= 0 && offset <= size && count <= size - offset;
}

// Hands offset and count of each run of bytes in a state to `transfer` and stops at the first failure. The
// runs are those of the image as it is then: the library may let something else change it.
template <typename Transfer>
EepromStatus forEachRun(HeadboardEeprom& eeprom, ByteState wanted, int64_t offset, int64_t end,
                        Transfer transfer) {
    std::vector<ByteState> const& state = eeprom.state;
    while (true) {
        auto const last = state.begin() + std::min<int64_t>(end, int64_t(state.size()));
        auto const first = state.begin() + std::min<int64_t>(offset, last - state.begin());
        auto const begin = std::find(first, last, wanted);
        auto const stop = std::find_if(begin, last, [&](ByteState s) { return s != wanted; });
        offset = stop - state.begin();
        if (begin == stop)
            return kEepromOk;
        EepromStatus const status = transfer(int32_t(begin - state.begin()), int32_t(stop - begin));
        if (status != kEepromOk)
            return status;
    }
}

// The count of bytes that Load and Put work on; negative when the range does not fit. A range that reaches
// the end of the image is cut before the last byte, deliberately: that byte stays out of the record store.
int64_t countBeforeLastByte(HeadboardEeprom& eeprom, int32_t offset, int32_t count) {
    int64_t const size = eeprom.imageSize();
    if (offset < 0)
        return kEepromFailed;
    return int64_t{offset} + count >= size ? size - 1 - offset : count;
}

// What a transfer of a range came to; the image may have been released meanwhile.
EepromStatus statusOf(HeadboardEeprom& eeprom, int32_t offset, int32_t count, int libraryResult) {
    if (libraryResult == kLibraryNoAnswer)
        return kEepromNoAnswer;
    return libraryResult == 0 && isInside(eeprom, offset, count) ? kEepromOk : kEepromFailed;
}

EepromStatus writeRange(HeadboardEeprom& eeprom, Sensor const& sensor, int32_t offset, int32_t count,
                        uint8_t const* source) {
    if (!isInside(eeprom, offset, count))
        return kEepromFailed;
    if (count == 0)
        return kEepromOk;
    // A copy, because the image may change or go while the library is busy.
    uint8_t const* const from = source ? source : eeprom.image.data() + offset;
    std::vector<uint8_t> const bytes(from, from + count);
    int const result = writeDevice(eeprom, sensor, uint32_t(offset), bytes);
    EepromStatus const status = statusOf(eeprom, offset, count, result);
    if (status != kEepromOk)
        return status;
    if (source)
        std::ranges::copy(bytes, eeprom.image.begin() + offset);
    // A byte that was changed again during the write stays to be written.
    for (size_t i = 0; i < bytes.size(); ++i)
        if (eeprom.image[size_t(offset) + i] == bytes[i])
            eeprom.state[size_t(offset) + i] = ByteState::Current;
    return kEepromOk;
}

// The slot's object without its owner.
EepromShare takeFrom(EepromSlot& slot) {
    EepromShare const taken(slot);
    if (std::exchange(slot, nullptr))
        taken->ref.deref();
    return taken;
}
} // namespace

EepromShare HeadboardEepromCreate(vy_Camera* camera) {
    EepromShare eeprom(new HeadboardEeprom);
    HeadboardEepromBind(*eeprom, camera);
    return eeprom;
}

void HeadboardEepromBind(HeadboardEeprom& eeprom, vy_Camera* camera) {
    if (!camera)
        return;
    eeprom.borrowedHandle = true;
    eeprom.sensor = Sensor(camera);
    std::optional<SensorInfo> const info = eeprom.sensor.info();
    // By the library's description of the open sensor, not by the host's record.
    SensorKind const& kind = info ? sensorKind(info->sensorKind, info->variant) : unknownSensorKind();
    eeprom.deviceAddress = kind.eepromAddress;
    eeprom.bridgeOnly = kind.eepromBridgeOnly;
}

void HeadboardEepromRelease(HeadboardEeprom& eeprom) {
    eeprom.image.clear();
    eeprom.state.clear();
    if (!eeprom.borrowedHandle)
        eeprom.sensor.close();
}

void HeadboardEepromEnsureImage(HeadboardEeprom& eeprom) {
    if (!eeprom.image.empty() && eeprom.imageSize() >= eeprom.deviceSize)
        return;
    auto const size = size_t(std::max(eeprom.deviceSize, kSmallestImage));
    eeprom.image.assign(size, kErased);
    eeprom.state.assign(size, ByteState::NotRead);
}

EepromStatus HeadboardEepromLoad(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                 uint8_t* destination) {
    HeadboardEepromEnsureImage(eeprom);
    int64_t const clipped = countBeforeLastByte(eeprom, offset, count);
    if (clipped < 0)
        return kEepromFailed;
    EepromStatus const status =
        forEachRun(eeprom, ByteState::NotRead, offset, offset + clipped, [&](int32_t begin, int32_t length) {
            return HeadboardEepromDeviceRead(eeprom, begin, length);
        });
    if (status != kEepromOk)
        return status;
    if (!isInside(eeprom, offset, clipped)) // released meanwhile
        return kEepromFailed;
    if (destination)
        std::copy_n(eeprom.image.begin() + offset, clipped, destination);
    return kEepromOk;
}

EepromStatus HeadboardEepromPut(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                uint8_t const* bytes) {
    HeadboardEepromEnsureImage(eeprom);
    int64_t const clipped = countBeforeLastByte(eeprom, offset, count);
    if (clipped < 0)
        return kEepromFailed;
    std::copy_n(bytes, clipped, eeprom.image.begin() + offset);
    std::fill_n(eeprom.state.begin() + offset, clipped, ByteState::Changed);
    return kEepromOk;
}

EepromStatus HeadboardEepromFlush(HeadboardEeprom& eeprom) {
    if (!eeprom.sensor || eeprom.image.empty())
        return kEepromOk;
    HeadboardEepromEnsureImage(eeprom);
    Sensor const sensor = eeprom.sensor; // of its own: a flush goes on when the EEPROM is abandoned
    return forEachRun(eeprom, ByteState::Changed, 0, eeprom.imageSize(), [&](int32_t offset, int32_t count) {
        return writeRange(eeprom, sensor, offset, count, nullptr);
    });
}

bool HeadboardEepromHasChanges(HeadboardEeprom& eeprom) {
    return std::ranges::find(eeprom.state, ByteState::Changed) != eeprom.state.end();
}

EepromStatus HeadboardEepromVerify(HeadboardEeprom& eeprom, int32_t offset, int32_t count) {
    HeadboardEepromEnsureImage(eeprom);
    bool const whole = count < 0;
    int64_t const begin = whole ? 0 : offset;
    int64_t const end = std::min<int64_t>(eeprom.imageSize(), whole ? INT32_MAX : begin + count);
    if (begin < 0 || end < begin)
        return kEepromFailed;
    std::vector<uint8_t> const written = eeprom.image;
    return forEachRun(eeprom, ByteState::Current, begin, end, [&](int32_t at, int32_t length) {
        EepromStatus const status = HeadboardEepromDeviceRead(eeprom, at, length);
        if (status != kEepromOk)
            return status;
        auto const read = eeprom.image.begin() + at;
        return std::equal(read, read + length, written.begin() + at) ? kEepromOk : kEepromMismatch;
    });
}

EepromStatus HeadboardEepromDeviceRead(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                       uint8_t* destination) {
    HeadboardEepromEnsureImage(eeprom);
    if (!isInside(eeprom, offset, count))
        return kEepromFailed;
    if (count == 0)
        return kEepromOk;
    std::vector<uint8_t> bytes(size_t(count), kErased);
    int const result = readDevice(eeprom, eeprom.sensor, uint32_t(offset), bytes);
    EepromStatus const status = statusOf(eeprom, offset, count, result);
    if (status != kEepromOk)
        return status;
    std::copy(bytes.begin(), bytes.end(), eeprom.image.begin() + offset);
    std::fill_n(eeprom.state.begin() + offset, count, ByteState::Current);
    if (destination)
        std::copy(bytes.begin(), bytes.end(), destination);
    return kEepromOk;
}

EepromStatus HeadboardEepromDeviceWrite(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                        uint8_t const* source) {
    HeadboardEepromEnsureImage(eeprom);
    return writeRange(eeprom, eeprom.sensor, offset, count, source);
}

EepromShare sharedEeprom(EepromSlot& slot, vy_Camera* camera) {
    if (slot)
        return EepromShare(slot);
    EepromShare const made = HeadboardEepromCreate(camera);
    // The library may have spun events while the object was made, and someone else been the first user.
    if (!slot) {
        slot = made.data();
        slot->ref.ref();
    }
    return EepromShare(slot);
}

void discardEeprom(EepromSlot& slot) {
    if (EepromShare const discarded = takeFrom(slot))
        HeadboardEepromRelease(*discarded);
}

HeadboardEeprom& EepromUse::take(vy_Camera* camera) {
    if (!m_isAbandoned)
        m_share = sharedEeprom(m_slot, camera);
    // Asked again, since the library was asked for the sensor. No process-wide EEPROM is left without a
    // camera.
    if (m_isAbandoned)
        m_share = EepromShare(new HeadboardEeprom);
    return *m_share;
}

HeadboardEeprom& EepromUse::renew(vy_Camera* camera) {
    if (!m_isAbandoned)
        discardEeprom(m_slot);
    return take(camera);
}

void EepromUse::flush() {
    if (m_isAbandoned)
        return;
    (void)HeadboardEepromFlush(*m_share);
    if (m_slot && !isCurrent())
        HeadboardEepromRelease(*m_slot);
}

void EepromUse::abandon() {
    m_isAbandoned = true;
    if (!m_share)
        return;
    m_share->sensor = Sensor(nullptr);
    if (isCurrent())
        (void)takeFrom(m_slot);
}
} // namespace kestra
