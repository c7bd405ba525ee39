#pragma once

#include "common/sensor.h"
#include "common/sensor_kinds.h"
#include "headboard/record_format.h"

#include <QSharedData>
#include <cstdint>
#include <vector>

namespace kestra {
/// What the operations on the headboard EEPROM answer, in the place of an offset, a size or a length too.
enum EepromStatus : int32_t {
    kEepromOk = 0,
    kEepromFailed = -1,       ///< no camera, a range that does not fit, a missing register, a failed transfer
    kEepromNotFormatted = -2, ///< the image does not begin with the magic
    kEepromNoRoom = -3,       ///< the EEPROM's end or the record's capacity would be reached
    kEepromNoRecord = -4,     ///< no such record; the chain ended
    kEepromNoAnswer = -6,     ///< the device does not answer
    kEepromBufferTooSmall = -7,
    kEepromMismatch = -10, ///< the device holds something else than was written
};

/// What is known of a byte of the image.
enum class ByteState : uint8_t {
    NotRead = 0, ///< the image holds 0xFF in its place
    Current = 1, ///< equal to the device
    Changed = 2, ///< not yet written
};

/// The serial EEPROM on the camera's headboard: an image of the whole device, read byte by byte as needed and
/// written on request. Used on the host's user-interface thread only.
///
/// There is one object, and its slot owns it. Whoever begins an operation takes a share (`EepromShare`) and
/// passes a reference on: what a library call lets in may discard the object or release its image, and the
/// operation then fails and touches nothing that was freed.
class HeadboardEeprom : public QSharedData {
public:
    HeadboardEeprom() = default;
    HeadboardEeprom(HeadboardEeprom const&) = delete;
    HeadboardEeprom& operator=(HeadboardEeprom const&) = delete;

    Sensor sensor{nullptr}; ///< null: there is no device
    int32_t cameraIndex = 0;
    uint32_t deviceAddress = unknownSensorKind().eepromAddress; ///< on the serial bus, write form
    int32_t deviceSize = 8176;                                  ///< bytes
    bool bridgeOnly = false;      ///< the sensor reaches its EEPROM through registers only
    uint32_t addressBits = 16;    ///< width of the EEPROM's own addresses
    bool borrowedHandle = false;  ///< the camera is the host's and never closed here
    std::vector<uint8_t> image;   ///< empty until it is needed
    std::vector<ByteState> state; ///< one for each byte of the image

    [[nodiscard]] int32_t imageSize() const { return int32_t(image.size()); }
    /// The largest register set, in bytes.
    [[nodiscard]] int32_t registerRoom() const { return deviceSize - kReservedBytes; }
};
using EepromShare = QExplicitlySharedDataPointer<HeadboardEeprom>;

// Offsets and counts are in bytes. Operations on the device answer `kEepromNoAnswer`, or `kEepromFailed` for
// every other failure; the bytes of a range that failed keep their state, so the next attempt includes them.

/// An EEPROM with the usual size and addressing, on the host's camera handle or, with null, on none.
[[nodiscard]] EepromShare HeadboardEepromCreate(vy_Camera* camera);

/// Takes another camera handle of the host's and finds out where its sensor has the EEPROM. The image stays;
/// null changes nothing.
void HeadboardEepromBind(HeadboardEeprom& eeprom, vy_Camera* camera);

/// Drops the image with all changes; a camera that is not the host's is closed.
void HeadboardEepromRelease(HeadboardEeprom& eeprom);

/// Allocates the image when there is none or the device is larger: the old one is then dropped. Every other
/// operation does this first.
void HeadboardEepromEnsureImage(HeadboardEeprom& eeprom);

/// Reads what was not read yet of a range. A range that reaches the end of the image is cut before its last
/// byte. `destination`, when given, takes the range's bytes and holds `count`.
[[nodiscard]] EepromStatus HeadboardEepromLoad(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                               uint8_t* destination = nullptr);

/// Changes a range of the image, cut in the same way.
[[nodiscard]] EepromStatus HeadboardEepromPut(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                              uint8_t const* bytes);

/// Writes all changed bytes to the device. Without a camera or an image there is nothing to do.
[[nodiscard]] EepromStatus HeadboardEepromFlush(HeadboardEeprom& eeprom);

/// Whether a change of the image still waits to be written.
[[nodiscard]] bool HeadboardEepromHasChanges(HeadboardEeprom& eeprom);

/// Reads the current bytes of a range again: `kEepromMismatch` at the first difference, the image then
/// holding what the device holds. A negative count means the whole image.
[[nodiscard]] EepromStatus HeadboardEepromVerify(HeadboardEeprom& eeprom, int32_t offset, int32_t count);

/// Reads a range, whatever its state, into the image and, when given, to `destination`.
[[nodiscard]] EepromStatus HeadboardEepromDeviceRead(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                                     uint8_t* destination = nullptr);

/// Writes a range, whatever its state, from `source` or, with null, from the image.
[[nodiscard]] EepromStatus HeadboardEepromDeviceWrite(HeadboardEeprom& eeprom, int32_t offset, int32_t count,
                                                      uint8_t const* source = nullptr);

/// The process-wide EEPROM, null until its first user. Pages are handed a reference to the slot.
using EepromSlot = HeadboardEeprom*;

/// A share of the process-wide EEPROM; the first user creates it on its camera.
[[nodiscard]] EepromShare sharedEeprom(EepromSlot& slot, vy_Camera* camera);

/// Drops the image with all that is not written, then the object; the slot is null before a call into the
/// library can find it.
void discardEeprom(EepromSlot& slot);

/// A page's use of the process-wide EEPROM: the share that a step of it works on.
class EepromUse {
public:
    explicit EepromUse(EepromSlot& slot) : m_slot(slot) {}

    /// The process-wide EEPROM, created on the camera by its first user, until the step ends.
    [[nodiscard]] HeadboardEeprom& take(vy_Camera* camera);
    /// The same, anew: what the one before has not written is dropped.
    [[nodiscard]] HeadboardEeprom& renew(vy_Camera* camera);
    /// Whether nobody has discarded it since.
    [[nodiscard]] bool isCurrent() const { return m_slot == m_share.data(); }
    /// Writes what was changed; what stays unwritten tells a failure. Who discarded the EEPROM inside it may
    /// have read the device before the last of these bytes: that image is dropped.
    void flush();
    void end() { m_share.reset(); }

    /// The page is gone: a flush that has begun goes on to its end, lest the chain be torn, and nothing else
    /// of the step reaches the device. The next user gets another EEPROM, without what was not written.
    void abandon();

private:
    EepromSlot& m_slot;
    EepromShare m_share;
    bool m_isAbandoned = false;
};
} // namespace kestra
