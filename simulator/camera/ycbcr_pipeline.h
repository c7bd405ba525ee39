#pragma once

#include "simulator/camera/read_out.h"

namespace simulator {
/// The colour pipeline of a system-on-chip sensor as it stands for a calibration: the corrected mosaic
/// becomes YCbCr 4:2:2 (Y Cb Y Cr) with the ITU-R BT.601 matrix and a linear tone, no gains and no matrix of
/// its own. Luma runs from the profile's `lumaLow` to `lumaHigh`, chroma over `chromaSpan` around 128.
[[nodiscard]] Frame ycbcrFrame(SensorArray const& array, ReadOut const& readOut, Mosaic const& mosaic);
} // namespace simulator
