#pragma once

#include <cstddef>
#include <cstdint>

/// A simple loop over a buffer: the fastest one shows what the machine can read.
struct PlainRead {
    char const* name;
    /// Adds `count` 32-bit words up in one way or another.
    uint64_t (*sum)(uint32_t const* words, size_t count);
};
extern PlainRead const kPlainReads[3];
