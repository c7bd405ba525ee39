#pragma once

#include "tools/headboard-image/outcome.h"

#include <QStringList>

namespace headboard_image {
/// Does what the arguments ask for; the first is the program's name. A core application must exist.
[[nodiscard]] Outcome runCommandLine(QStringList const& arguments);
} // namespace headboard_image
