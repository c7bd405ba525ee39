#pragma once

#include "simulator/host/command_line.h"

namespace pictara {

class Session;

/// Shows live picture, light and dialog until the person closes the window. Returns the program's exit code.
[[nodiscard]] int runWindow(Session& session, Options const& options);

} // namespace pictara
