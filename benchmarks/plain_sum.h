#pragma once

#include <cstddef>
#include <cstdint>

/// Sum of 32-bit words: about the least work with which every pixel of a buffer can be looked at.
[[nodiscard]] uint64_t plainSum(uint32_t const* words, size_t count);
