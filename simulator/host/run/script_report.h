#pragma once

#include "simulator/host/run/run_all.h"

namespace pictara {
class OutputFolder;
class Session;

/// How a script ended.
struct ScriptEnd {
    size_t commands = 0; ///< of the whole script
    size_t done = 0;     ///< of these, without a failure
    QString cause;       ///< of the failure, with file and line; empty for none
    RunProgress state;   ///< frames
};

/// Writes a script's report and its summary for scripts. Of a script that is done and left a solution in the
/// sensor they tell how even the picture is without and with it, measured as at the end of a run by the
/// dialog's own buttons. Returns the page's absolute name; empty when the user interrupted the measurement.
[[nodiscard]] QString reportScript(Session& session, DialogPage& page, ScriptEnd const& end,
                                   OutputFolder& output);
} // namespace pictara
