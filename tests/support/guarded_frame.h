#pragma once

#include "published/entries.h"
#include "tests/support/guarded_memory.h"

#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

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
};

/// A frame whose pixels lie right at a guard page. Sizes that do not hold together, or tell of more pixels
/// than there is room for, as no truthful host would, have none.
struct GuardedFrame {
    GuardedFrame(GuardedMemory& room, FrameSizes const& told, bool atRear) : sizes(told) {
        int64_t const bytes = told.holdTogether() ? told.step() * told.height : 0;
        if (bytes > int64_t(room.size()))
            return;
        pixels = {atRear ? room.placeAtRear(size_t(bytes)) : room.placeAtFront(size_t(bytes)), size_t(bytes)};
        // Walked upwards, a frame begins with its last row in memory.
        data = pixels.data() + (told.pitch < 0 && bytes > 0 ? bytes - told.step() : 0);
    }
    /// Hands it to the plug-in through one of its two entries. False: something was painted that is no pixel
    /// of a displayed frame, such as what pads a row.
    [[nodiscard]] bool deliver(bool asRgb) const {
        std::vector<uint8_t> const before(pixels.begin(), pixels.end());
        auto const width = uint32_t(sizes.width);
        if (asRgb)
            RgbImageData(data, sizes.type, width, uint32_t(sizes.height), sizes.pitch);
        else
            ImageData(data, sizes.type, width, sizes.height, uint32_t(sizes.pitch));
        bool const isPaintable = sizes.type == FrameSizes::kRgb32 && sizes.pitch != 0;
        auto const paintable = size_t(isPaintable ? sizes.rowBytes() : 0), step = size_t(sizes.step());
        for (size_t row = 0; row < before.size(); row += step)
            if (std::memcmp(&pixels[row] + paintable, &before[row] + paintable, step - paintable) != 0)
                return false;
        return true;
    }

    FrameSizes const sizes;
    std::span<uint8_t> pixels;
    uint8_t* data = nullptr;
};
} // namespace kestra
