#pragma once

#include <QString>

namespace pictara {
/// Sends all messages of the process to the standard error stream, a line each, and keeps the last cause that
/// the calibration library logged.
void installMessageLog();

/// The cause that the calibration library logged last, without its mark; empty when it logged none. That it
/// then has no solution is no cause of its own.
[[nodiscard]] QString lastSolverMessage();
/// The blocks that the cause is about, as the library logged them before it; empty without any.
[[nodiscard]] QString lastRefusedBlocks();

/// What was logged so far is no cause of what comes.
void forgetSolverMessage();

/// A line of the program's own on the standard error stream.
void complain(QString const& text);
} // namespace pictara
