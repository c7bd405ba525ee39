#pragma once

#include "calibration/page_core.h"
#include "pictures/frame.h"

namespace kestra {

/// What both pages do with a displayed frame, in the order in which they do it. Frames of other types and
/// steps that do not run leave everything as it is.

/// Counts the exposure step up, corrects the host's relative colour gains from the picture's centre, and lets
/// frames pass after a correction.
void adjustExposureAndColourBalance(PageCore& core, Frame const& frame);

/// Counts the calibration step's phase up by one frame while it lies in first..last.
void countPhase(PageCore& core, Frame const& frame, int32_t first, int32_t last);

/// Measures the colour uniformity when it is due. A frame whose sizes do not hold together leaves it due.
void measureUniformityWhenDue(PageCore& core, Frame const& frame, int skippedRows);

/// Marks the worst block in the picture while its deviation misses the limit.
void markWorstBlock(PageCore const& core, Frame const& frame);

} // namespace kestra
