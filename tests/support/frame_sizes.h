#pragma once

#include <cstdint>
#include <cstdlib>

namespace kestra {
/// What a host tells of a frame; any numbers.
struct FrameSizes {
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
    [[nodiscard]] bool holdTogether() const {
        // These two are captured by their rows' bytes alone.
        if (pitch != 0 && (type == kRaw12 || type == kYcbcr))
            return height > 0;
        return width > 0 && height > 0 && step() >= rowBytes();
    }
    /// How many bytes of a row may be painted into: the pixels of a displayed frame, never what pads them.
    [[nodiscard]] int64_t paintableBytes() const { return type == kRgb32 && pitch != 0 ? rowBytes() : 0; }
};
} // namespace kestra
