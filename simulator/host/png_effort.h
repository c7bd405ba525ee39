#pragma once

namespace pictara {

/// Passed as the quality of a picture saved as PNG, which Qt takes as the compressor's effort. Sensor noise
/// does not compress: the usual effort takes eight times as long for a file that is an eighth smaller.
inline constexpr int kPngEffort = 75;

} // namespace pictara
