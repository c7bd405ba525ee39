#pragma once

#include "calibration/page_core.h"

namespace kestra {

/// Shows every step's status text, bullet and progress.
void refreshStatus(PageCore& core);

/// Enables exactly the widgets that the state allows.
void refreshEnables(PageCore& core);

/// Shows on the page's button whether the sensor's lens correction is on.
void refreshLensCorrection(PageCore& core);

} // namespace kestra
