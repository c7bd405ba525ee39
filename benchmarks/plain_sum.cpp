#include "benchmarks/plain_sum.h"

// In a file of its own, so that nothing of it is computed at the caller's.
uint64_t plainSum(uint32_t const* words, size_t count) {
    uint64_t sum = 0;
    for (size_t i = 0; i < count; ++i)
        sum += words[i];
    return sum;
}
