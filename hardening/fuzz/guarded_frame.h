#pragma once

#include "tests/support/input_reader.h"

#include <vector>

/// A frame whose type, sizes and pitch come from a fuzz input. When they hold together its pixels are really
/// there and nothing around them may be touched; when they do not, nothing at all may be. Up to four live at
/// a time, one made inside the delivery of the other.
class GuardedFrame {
public:
    explicit GuardedFrame(InputReader& input);
    ~GuardedFrame();
    GuardedFrame(GuardedFrame const&) = delete;
    GuardedFrame& operator=(GuardedFrame const&) = delete;

    /// A displayed frame and a raw one, as good ones are.
    static void deliverGood(int displayed, int raw);

    /// Hands the frame to the plug-in through one of its two entries, and looks what it did to the pixels.
    void deliver();

private:
    void chooseSizes(InputReader& input);
    void fill(InputReader& input);
    [[nodiscard]] bool isConsistent() const;
    [[nodiscard]] size_t bytesPerPixel() const;
    [[nodiscard]] size_t rowBytes() const;

    uint8_t* m_pixels = nullptr;
    uint32_t m_type = 0;
    int32_t m_width = 0, m_height = 0, m_pitch = 0;
    bool m_isNull = false, m_isRgbEntry = false;
    std::vector<uint8_t> m_before; ///< the pixels as they were; empty when there are none
};
