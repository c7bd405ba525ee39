#include "calibration/captured_frames.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace kestra {
namespace {
// Zeros for `elements` samples, with the frame's bytes at the start; null when there is no memory.
CapturedSamples copyOf(Frame const& frame, int64_t bytes, size_t elements) {
    try {
        auto const samples = std::make_shared<std::vector<uint16_t>>(elements);
        std::memcpy(samples->data(), frame.data, size_t(bytes));
        return samples;
    } catch (std::exception const&) { // no memory, or more than a vector holds
        return nullptr;
    }
}
} // namespace

CaptureRow* CapturedFrames::capturing() {
    auto const row = std::ranges::find(*this, kCapturing, &CaptureRow::state);
    return row == end() ? nullptr : &*row;
}

bool CapturedFrames::haveAllFrames() const {
    return std::ranges::all_of(*this, [](CaptureRow const& row) { return row.samples != nullptr; });
}

void CapturedFrames::capture(CaptureRow& row, Frame const& frame, size_t imagePixels) {
    int64_t const bytes = int64_t{frame.height} * frame.pitch;
    // Two negatives would tell a size, but not where it begins.
    if (!frame.data || std::min(frame.height, frame.pitch) <= 0)
        return;
    if (m_frameBytes < bytes) {
        for (CaptureRow& each : *this)
            each.samples = nullptr;
        m_frameBytes = bytes;
    }
    // The size is told in bytes and taken as a number of 16-bit samples, so half of a buffer is room.
    row.samples = copyOf(frame, bytes, std::max(size_t(m_frameBytes), imagePixels));
    if (!row.samples) {
        row.state = kCaptureFailed;
        return;
    }
    row.width = frame.width;
    row.height = frame.height;
    row.progress = 100;
    row.state = kCaptured;
}
} // namespace kestra
