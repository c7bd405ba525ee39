#pragma once

#include <QString>

namespace pictara {

/// Sends all messages of the process to the standard error stream, a line each, and keeps the last cause that
/// the calibration library logged.
void installMessageLog();

/// The last message of the calibration library, without its mark; empty when it logged none.
[[nodiscard]] QString lastSolverMessage();

/// What was logged so far is no cause of what comes.
void forgetSolverMessage();

/// A line of the program's own on the standard error stream.
void complain(QString const& text);

/// Set while a progress bar stands on the terminal's last line: a message then clears that line first.
void setProgressLineShown(bool shown);

} // namespace pictara
