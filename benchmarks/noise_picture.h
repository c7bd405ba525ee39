#pragma once

#include "benchmarks/benchmarks.h"

#include <vector>

/// A camera's pictures of noise, RGB-32 without padding, as they come from memory: one lies behind the other
/// in one buffer of the largest frame's size, which all ways of a measurement share, so that no cache holds
/// the next.
class NoisePictures {
public:
    explicit NoisePictures(FrameSize size);

    [[nodiscard]] FrameSize size() const { return m_size; }
    /// The next picture's first pixel; after the last one comes the first.
    [[nodiscard]] uint32_t const* next();

private:
    FrameSize m_size;
    std::vector<uint32_t> const& m_noise;
    size_t m_next = 0;
};
