#pragma once

#include "tests/support/frame_sizes.h"
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

    uint8_t* m_pixels = nullptr;
    kestra::FrameSizes m_sizes;
    bool m_isNull = false, m_isRgbEntry = false;
    std::vector<uint8_t> m_before; ///< the pixels as they were; empty when there are none
};
