#pragma once

#include <cstddef>
#include <cstdint>

namespace kestra {
/// The host's image-type codes that the plug-in tells apart; any other is raw Bayer with 8 bits a pixel.
enum class ImageType : uint32_t { Ycbcr = 5, Rgb32 = 11, Raw12 = 13 };

/// A frame as the host hands it over, borrowed for the call. An RGB-32 pixel is a little-endian word: bits 0
/// to 7 blue, 8 to 15 green, 16 to 23 red. A negative pitch walks upwards in memory.
struct Frame {
    void const* data = nullptr;
    ImageType type = ImageType::Raw12;
    int32_t width{};  ///< pixels
    int32_t height{}; ///< rows
    int32_t pitch{};  ///< bytes from one row to the next

    [[nodiscard]] bool isRgb32() const { return type == ImageType::Rgb32; }

    [[nodiscard]] int bytesPerPixel() const {
        if (isRgb32())
            return 4;
        return type == ImageType::Ycbcr || type == ImageType::Raw12 ? 2 : 1;
    }

    /// Whether the sizes hold together for `bytesPerPixel`: both above 0 and the pitch wide enough for a row.
    [[nodiscard]] bool isConsistent(int bytesPerPixel) const {
        int64_t const step = pitch < 0 ? -int64_t{pitch} : int64_t{pitch};
        return width > 0 && height > 0 && step >= int64_t{width} * bytesPerPixel;
    }

    /// Whether RGB-32 pixels of the frame may be touched.
    [[nodiscard]] bool hasRgb32Pixels() const { return data && isRgb32() && isConsistent(4); }

    /// First byte of a row.
    [[nodiscard]] uint8_t const* row(int64_t y) const {
        return static_cast<uint8_t const*>(data) + ptrdiff_t(y * pitch);
    }
};
} // namespace kestra
