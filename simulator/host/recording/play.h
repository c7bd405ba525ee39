#pragma once

#include "simulator/host/recording/script.h"

namespace pictara {
class Session;

/// Works the dialog by a script's commands and shows each as it comes; a report tells how far it came.
/// Returns kExitDone; after "FILE:LINE: cause", kExitNotCalibrated for a command that failed, kExitTimeout
/// for a wait in vain.
[[nodiscard]] int runScript(Session& session, Script const& script);

/// Does to the plug-in what the recording of the options tells, on a fresh camera and in a folder of its own,
/// and compares the calls. Names the first that differs. Returns kExitDone when all are equal,
/// kExitNotCalibrated when one differs, kExitUsage when the recording cannot be replayed.
[[nodiscard]] int replayRecording(Options const& options);
} // namespace pictara
