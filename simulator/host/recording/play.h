#pragma once

#include "simulator/host/recording/script.h"

#include <functional>

namespace pictara {
class Session;

/// Works the dialog by a script's commands and shows each as it comes; its certificate tells how far it came.
/// Returns kExitDone; after "FILE:LINE: cause", kExitNotCalibrated for a command that failed, kExitTimeout
/// for a wait in vain.
[[nodiscard]] int runScript(Session& session, Script const& script);

/// Does to the plug-in what the recording of the options tells, on a fresh camera and in a folder of its own,
/// and compares the calls. Names the first that differs. Returns kExitDone when all are equal,
/// kExitNotCalibrated when one differs, kExitUsage when the recording cannot be replayed.
[[nodiscard]] int replayRecording(Options const& options);

/// Keeps all that crosses the boundary while `sit` works in the options' file, whole or not at all; what the
/// options' files hold at the beginning is part of it. Returns what `sit` does, or another exit code when the
/// file cannot be written, which is told.
[[nodiscard]] int recordWhile(Options const& options, std::function<int()> const& sit);
} // namespace pictara
