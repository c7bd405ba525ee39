#pragma once

#include "headboard/headboard_eeprom.h"

namespace kestra {
/// What an operation moves over the bus.
enum class Transfer {
    RawRead,  ///< as many bytes as lie side by side
    RawWrite, ///< a byte or two, which share a word of the device
    Pair,     ///< a byte or two of those that lie side by side, whether read or written
};

/// The fewest transfers that carry every byte of a state in the range [begin, end), and no other.
inline int64_t leastTransfers(std::vector<ByteState> const& state, ByteState wanted, size_t begin, size_t end,
                              Transfer transfer) {
    int64_t count = 0;
    size_t length = 0; // of the run so far
    for (size_t i = begin; i < end; ++i) {
        length = state[i] == wanted ? length + 1 : 0;
        bool const beginsPair = length % 2 == 1, beginsWord = length > 0 && i % 2 == 0;
        count += transfer == Transfer::Pair ? beginsPair
                                            : length == 1 || (transfer == Transfer::RawWrite && beginsWord);
    }
    return count;
}
} // namespace kestra
