#pragma once

#include <QString>

namespace pictara {
/// Sends all messages of the process to the standard error stream, a line each, and keeps the last cause that
/// the calibration library logged.
void installMessageLog();

/// Why the calibration library did not do what it was asked for, as it logged it last.
struct SolverCause {
    QString text;   ///< without the library's mark; empty when it logged none
    QString blocks; ///< that the cause is about; empty without any
};

/// That the library then has no solution is no cause of its own.
[[nodiscard]] SolverCause lastSolverCause();
/// What was logged so far is no cause of what comes.
void forgetSolverCause();

/// A line of the program's own on the standard error stream.
void complain(QString const& text);
} // namespace pictara
