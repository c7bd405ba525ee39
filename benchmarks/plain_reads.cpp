#include "benchmarks/plain_reads.h"

// In a file of its own, so that nothing of it is computed at the caller's.

namespace {
uint64_t sumWords(uint32_t const* words, size_t count) {
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i)
        sum += words[i];
    return sum;
}

uint64_t sumBytes(uint32_t const* words, size_t count) {
    auto const* const bytes = reinterpret_cast<uint8_t const*>(words);
    uint32_t sum = 0;
    for (size_t i = 0; i < count * 4; ++i)
        sum += bytes[i];
    return sum;
}

// Sums that do not wait for one another, in vectors by the compiler.
uint64_t sumVectors(uint32_t const* words, size_t count) {
    constexpr size_t kLanes = 16;
    uint32_t sums[kLanes] = {};
    for (; count >= kLanes; count -= kLanes, words += kLanes)
        for (size_t lane = 0; lane < kLanes; ++lane)
            sums[lane] += words[lane];
    uint64_t sum = sumWords(words, count);
    for (uint32_t const lane : sums)
        sum += lane;
    return sum;
}
} // namespace

PlainRead const kPlainReads[] = {{"words", sumWords}, {"bytes", sumBytes}, {"vectors", sumVectors}};
