#pragma once

#include <cstddef>
#include <cstdlib>

namespace kestra {
/// Whether tests that walk through everything that may happen do so. They do for longer proofs, which set
/// KESTRA_WHOLE=1; else they take a fixed sample.
inline bool walksWhole() { return std::getenv("KESTRA_WHOLE") != nullptr; }

/// How far apart the cases of a walk are: `inSample` in a sample, else 1.
inline size_t stride(size_t inSample) { return walksWhole() ? 1 : inSample; }
} // namespace kestra
