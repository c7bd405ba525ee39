#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
class Session;

/// Shows the bench and the dialog until the person closes the window. Returns the program's exit code, and in
/// `nextProfile` the sensor for which the person wants another sitting, or nothing.
[[nodiscard]] int runWindow(Session& session, Options const& options, QString* nextProfile);
} // namespace pictara
