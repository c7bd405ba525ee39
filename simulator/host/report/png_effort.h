#pragma once

namespace pictara {
/// Passed as the quality of a picture saved as PNG, which Qt takes as the compressor's effort: the less, the
/// higher the number. Sensor noise hardly compresses; Qt's usual effort takes four times as long and saves
/// nothing.
inline constexpr int kPngEffort = 50;
} // namespace pictara
