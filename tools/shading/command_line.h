#pragma once

#include "tools/shading/commands.h"

#include <QStringList>

namespace shading {
/// What a run leaves for its two streams.
struct Outcome {
    int exitCode = kDone;
    QString output{};
    QString complaint{}; ///< a line; empty when all is well
};

/// Does what the arguments ask for; the first is the program's name. A core application must exist.
[[nodiscard]] Outcome runCommandLine(QStringList const& arguments);
} // namespace shading
