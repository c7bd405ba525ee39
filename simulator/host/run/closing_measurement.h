#pragma once

#include "simulator/host/report/summary_lines.h"
#include "simulator/host/run/run_all.h"

namespace pictara {
class Session;

/// The dialog's figures with the sensor's correction on or off, all else equal; the correction stays so.
/// Nothing when the dialog shows none.
[[nodiscard]] std::optional<Evenness> measureEvenness(Session& session, DialogPage& page, RunDriver& driver,
                                                      bool corrected);
/// With all the detail that a report tells.
[[nodiscard]] std::optional<Evenness> measureInDetail(Session& session, DialogPage& page, RunDriver& driver,
                                                      bool corrected);
} // namespace pictara
