#pragma once

#include <QString>
#include <QStringList>

namespace shading {
/// Exit codes of the program.
enum ExitCode : int {
    kDone = 0,
    kNothingFound = 1, ///< nothing could be measured, solved or read of what the files hold
    kUnusable = 2,     ///< bad command line, or a file that cannot be used or written
    // A picture is no flat field:
    kTooDark = 4,
    kClipped = 5,
    kNotFlat = 6,
    kInterrupted = 130,
};

/// What a run leaves for its two streams.
struct Outcome {
    int exitCode = kDone;
    QString output{};
    QString complaint{}; ///< a line; empty when all is well
};

/// Does what the arguments ask for; the first is the program's name. A core application must exist.
[[nodiscard]] Outcome runCommandLine(QStringList const& arguments);
} // namespace shading
