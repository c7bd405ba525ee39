#pragma once

#include "benchmarks/benchmarks.h"
#include "pictures/frame.h"

#include <cstdint>
#include <vector>

/// An RGB-32 picture of noise without padding between its rows.
struct NoisePicture {
    FrameSize size;
    std::vector<uint32_t> pixels;

    [[nodiscard]] kestra::Frame frame() const {
        return {pixels.data(), kestra::ImageType::Rgb32, size.width, size.height, size.width * 4};
    }
};

/// The picture of a size, made at the first call and kept: all ways are measured on the same buffer.
[[nodiscard]] NoisePicture const& noisePicture(FrameSize size);
