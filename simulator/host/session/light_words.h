#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/session/command_line.h"

#include <QStringList>

namespace pictara {
/// The lamp of the options, or the usual one.
[[nodiscard]] simulator::Light lightOf(Options const& options);

/// A light as a line of a script tells it: "light KELVIN LEVEL GRADIENT [object]".
[[nodiscard]] QStringList lightWords(simulator::Light const& light);

/// Changes what the words behind "light" tell and leaves the rest: KELVIN [LEVEL [GRADIENT [object]]]; an
/// object goes when there is a gradient without it. False when a number is none, or beyond its range.
[[nodiscard]] bool readLight(QStringList const& words, simulator::Light& light);
} // namespace pictara
