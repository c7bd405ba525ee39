#pragma once

#include "published/entries.h"

#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace kestra {
/// What a host tells of a frame; any numbers.
struct ToldFrame {
    static constexpr uint32_t kYcbcr = 5, kRaw8 = 8, kRgb32 = 11, kRaw12 = 13; ///< as the host numbers them

    uint32_t type = 0;
    int32_t width = 0, height = 0, pitch = 0;

    [[nodiscard]] int64_t bytesPerPixel() const {
        return type == kRgb32 ? 4 : type == kRaw12 || type == kYcbcr ? 2 : 1;
    }
    /// Of a row's own pixels.
    [[nodiscard]] int64_t rowBytes() const { return width * bytesPerPixel(); }
    /// From row to row. Pitch 0 tells of a raw frame without gaps.
    [[nodiscard]] int64_t step() const { return pitch == 0 ? rowBytes() : std::abs(int64_t{pitch}); }
    /// Whether a truthful host may tell these sizes.
    [[nodiscard]] bool holdTogether() const {
        // These two are captured by their rows' bytes alone.
        if (pitch != 0 && (type == kRaw12 || type == kYcbcr))
            return height > 0;
        return width > 0 && height > 0 && step() >= rowBytes();
    }
    /// What the rows take; 0 when the sizes do not hold together.
    [[nodiscard]] int64_t bytes() const { return holdTogether() ? step() * height : 0; }
    /// Hands it to the plug-in through one of its two entries; without pixels, a null pointer. False:
    /// something was painted that is no pixel of a displayed frame, such as what pads a row.
    [[nodiscard]] bool deliver(std::span<uint8_t> pixels, bool asRgb) const {
        std::vector<uint8_t> const before(pixels.begin(), pixels.end());
        // Walked upwards, a frame begins with its last row in memory.
        uint8_t* const data = pixels.empty() ? nullptr : &pixels[size_t(pitch < 0 ? bytes() - step() : 0)];
        if (asRgb)
            RgbImageData(data, type, uint32_t(width), uint32_t(height), pitch);
        else
            ImageData(data, type, uint32_t(width), height, uint32_t(pitch));
        auto const paintable = size_t(type == kRgb32 && pitch != 0 ? rowBytes() : 0);
        for (size_t row = 0; row < before.size(); row += size_t(step()))
            if (std::memcmp(&pixels[row] + paintable, &before[row] + paintable, size_t(step()) - paintable))
                return false;
        return true;
    }
};
} // namespace kestra
