#include "benchmarks/noise_picture.h"

#include <random>

namespace {
size_t pixelsOf(FrameSize size) { return size_t(size.width) * size_t(size.height); }

std::vector<uint32_t> const& noise() {
    static std::vector<uint32_t> pixels;
    std::mt19937 random(1);
    while (pixels.size() < pixelsOf(kFrameSizes.back()))
        pixels.push_back(uint32_t(random()));
    return pixels;
}
} // namespace

NoisePictures::NoisePictures(FrameSize size) : m_size(size), m_noise(noise()) {}

uint32_t const* NoisePictures::next() {
    size_t const pixels = pixelsOf(m_size);
    if (m_next + pixels > m_noise.size())
        m_next = 0;
    m_next += pixels;
    return m_noise.data() + m_next - pixels;
}
