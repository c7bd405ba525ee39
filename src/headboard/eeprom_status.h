#pragma once

#include <cstdint>

/// What the operations on the headboard EEPROM answer: 0 for success, or one of these. Operations that answer
/// an offset, a size or a length answer a negative status in its place.
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
