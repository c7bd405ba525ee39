#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
class Session;

/// Works the dialog by the commands of the options' script and shows each as it comes. Returns kExitDone;
/// after "FILE:LINE: cause", kExitUsage for a script that cannot be read, kExitNotCalibrated for a command
/// that failed, kExitTimeout for a wait in vain.
[[nodiscard]] int runScript(Session& session, Options const& options);
} // namespace pictara
