#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
/// Does to the plug-in what the recording of the options tells, on a fresh camera and in a folder of its own,
/// and compares the calls. Names the first that differs. Returns kExitDone when all are equal,
/// kExitNotCalibrated when one differs, kExitUsage when the recording cannot be replayed.
[[nodiscard]] int runRecordingReplay(Options const& options);
} // namespace pictara
