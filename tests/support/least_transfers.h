#pragma once

#include "headboard/headboard_eeprom.h"

#include <set>

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
    std::set<size_t> words;
    int64_t runs = 0, pairs = 0;
    size_t length = 0; // of the run so far
    for (size_t i = begin; i < end; ++i) {
        length = state[i] == wanted ? length + 1 : 0;
        if (length == 0)
            continue;
        words.insert(i / 2);
        runs += length == 1;
        pairs += length % 2;
    }
    if (transfer == Transfer::RawWrite)
        return int64_t(words.size());
    return transfer == Transfer::RawRead ? runs : pairs;
}
} // namespace kestra
