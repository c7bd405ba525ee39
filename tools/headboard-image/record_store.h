#pragma once

#include "headboard/headboard_eeprom.h"
#include "headboard/record_format.h"

#include <cstdint>
#include <span>
#include <vector>

namespace headboard_image {
/// A record in the chain; it lies inside the store as a whole.
struct RecordPlace {
    int32_t offset = 0;
    uint8_t type = 0;
    int32_t size = 0; ///< bytes, head included

    [[nodiscard]] int32_t length() const { return size - kestra::kRecordHead; } ///< of the payload
};

enum class ChainEnd : uint8_t {
    Marked, ///< as it should be
    NotFormatted,
    NoMark,        ///< the last record ends with the store
    RecordPastEnd, ///< a record is longer than the rest of the store
};

struct Chain {
    std::vector<RecordPlace> records;
    ChainEnd end = ChainEnd::Marked;
    int32_t endOffset = 0; ///< where the walk ended

    /// The record that begins at an offset, or null.
    [[nodiscard]] RecordPlace const* at(int32_t offset) const;
};

/// The record store in an image: as many bytes as the plug-in takes a device to have, or all of a smaller
/// image. What lies behind the store, such as the identity bytes of a headboard, is no part of it.
class RecordStore {
public:
    /// `sensor` decides how short entries are coded; null is the plain way.
    explicit RecordStore(std::span<uint8_t const> image, vy_Camera* sensor = nullptr);

    /// What the record operations work on.
    [[nodiscard]] kestra::EepromShare const& eeprom() const { return m_eeprom; }
    [[nodiscard]] int32_t size() const { return m_eeprom->deviceSize; }
    /// The last one is 0xFF, whatever the image holds.
    [[nodiscard]] std::span<uint8_t const> bytes() const;
    /// What the image holds there.
    [[nodiscard]] uint8_t lastByte() const { return m_lastByte; }

    [[nodiscard]] Chain chain() const;
    /// Valid until the next change.
    [[nodiscard]] std::span<uint8_t const> record(RecordPlace const& place) const;

    /// Puts what was changed into the image that the store was taken from.
    void copyTo(std::span<uint8_t> image) const;

private:
    kestra::EepromShare m_eeprom;
    uint8_t m_lastByte = 0;
};
} // namespace headboard_image
