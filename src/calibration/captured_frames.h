#pragma once

#include "pictures/frame.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace kestra {
/// The three illuminants of a calibration, in the order in which everything here has them: also the sensor's
/// left, middle and right.
enum Illuminant : size_t { kIncandescent, kFluorescent, kDaylight, kIlluminants };

/// State of a capture row.
enum CaptureState : uint32_t {
    kNotCaptured = 0,
    kArmed = 1,
    kWaiting = 2, ///< for the user, who changes the light and presses the row's button
    kCapturing = 3,
    kCaptured = 4,
    kIncompatibleSize = 5,
    kCaptureFailed = 6,
};

/// Samples of a captured frame, rows from the top; null when there are none.
using CapturedSamples = std::shared_ptr<std::vector<uint16_t> const>;

struct CaptureRow {
    CaptureState state = kNotCaptured;
    int32_t progress = 0; ///< 0 to 100
    CapturedSamples samples;
    int32_t width{};     ///< pixels of the captured frame
    int32_t height{};    ///< rows of the captured frame
    double redGain = 0;  ///< the host's relative gain at the last capture that recorded it; 0: none did
    double blueGain = 0; ///< the same for blue
    bool isLit = false;  ///< which of its two bullets a waiting row shows

    /// Ready for the frame.
    void arm() {
        state = kArmed;
        progress = 0;
        isLit = false;
    }
};

/// The frames that a calibration is made from, one an illuminant. They share one buffer size.
class CapturedFrames : public std::array<CaptureRow, kIlluminants> {
public:
    /// The first row that is capturing; null when there is none.
    [[nodiscard]] CaptureRow* capturing();
    /// Whether all rows hold a frame; their states do not matter.
    [[nodiscard]] bool haveAllFrames() const;

    /// Copies a frame into a row, which is then captured. A frame larger than those before drops all three
    /// first; the rows keep their states. A null frame or one without bytes changes nothing. `imagePixels` is
    /// the sensor's image size: a buffer never holds less, and is zero where the frame has nothing.
    void capture(CaptureRow& row, Frame const& frame, size_t imagePixels);

    /// Drops all frames, gains and states.
    void reset() { *this = {}; }

private:
    int64_t m_frameBytes = 0; // height x pitch of the largest frame so far
};
} // namespace kestra
