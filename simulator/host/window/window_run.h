#pragma once

#include "simulator/host/session/command_line.h"

namespace pictara {
class Session;

/// Asks the person for one of the installed sensors; `preferred` is chosen at first. None when the person
/// wants none.
[[nodiscard]] std::optional<QString> askForProfile(QString const& preferred);

/// Shows the bench and the dialog until the person closes the window or interrupts the program. Returns the
/// program's exit code.
[[nodiscard]] int runWindow(Session& session, Options const& options);
} // namespace pictara
